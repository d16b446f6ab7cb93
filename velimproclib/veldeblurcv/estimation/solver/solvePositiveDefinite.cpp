#include "velimproclib/veldeblurcv/estimation/solver/solvePositiveDefinite.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

// How the data moves. The upper factor U, with the matrix U^T U, is stored in panels of 16 columns.
// A panel holds its rows from the top down to its diagonal block, each row a contiguous line of 16
// doubles, so that half the matrix is stored and everything is read in order. Panels are finished
// from left to right, and within a panel blocks of 16 rows from top to bottom. A block (rows I,
// panel P) needs the products of the lines above it: those of panel I, of which single lanes are
// broadcast, with those of panel P. They are subtracted in register tiles, in chunks of lines that
// stay in the first-level cache. Then the triangle on the diagonal of I finishes the block's rows.
// The right-hand side is one more column of the matrix, which makes its forward substitution part
// of the same loop.

#ifndef VEL_SOLVE_POSITIVE_DEFINITE_LAYOUT
#define VEL_SOLVE_POSITIVE_DEFINITE_LAYOUT
namespace vel {
namespace {

constexpr std::size_t kBlock = 16;
/// Lines of two panels that stay in the first-level cache: 64 * 2 * 128 bytes.
constexpr std::size_t kChunkLines = 64;

struct alignas(64) Line {
    double columns[kBlock];
};

/// Line 0 of a panel; panel p has (p + 1) * 16 lines.
constexpr std::size_t panelStart(std::size_t panel) noexcept {
    return kBlock * panel * (panel + 1) / 2;
}

struct PanelMatrix {
    Line* lines;
    double* reciprocals; ///< of the pivots, one for each unknown
    std::size_t unknowns;

    std::size_t panels() const noexcept { return unknowns / kBlock + 1; }
    Line* panel(std::size_t p) const noexcept { return lines + panelStart(p); }
};

} // namespace
} // namespace vel
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/estimation/solver/solvePositiveDefinite.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Lanes = hn::CappedTag<double, kBlock / 2>;
/// Twice as many sums as rows fit the registers, of which 32-bit x86 has eight.
constexpr std::size_t kTileRows = HWY_ARCH_X86_32 ? 2 : 4;

/// Subtracts from `kTileRows` rows of a block, two vectors of columns from `column` on, the
/// products of `count` lines: lanes `row` and following of `left` with those columns of `right`.
void subtractTile(const Line* HWY_RESTRICT left, const Line* HWY_RESTRICT right, std::size_t count,
                  std::size_t row, std::size_t column, Line* HWY_RESTRICT block) {
    const Lanes d;
    const std::size_t next = column + hn::Lanes(d);
    hn::Vec<Lanes> first[kTileRows];
    hn::Vec<Lanes> second[kTileRows];
    HWY_UNROLL(4)
    for (std::size_t r = 0; r < kTileRows; ++r) {
        first[r] = hn::Load(d, block[row + r].columns + column);
        second[r] = hn::Load(d, block[row + r].columns + next);
    }
    for (std::size_t k = 0; k < count; ++k) {
        const auto firstFactor = hn::Load(d, right[k].columns + column);
        const auto secondFactor = hn::Load(d, right[k].columns + next);
        HWY_UNROLL(4)
        for (std::size_t r = 0; r < kTileRows; ++r) {
            const auto factor = hn::Set(d, left[k].columns[row + r]);
            first[r] = hn::Sub(first[r], hn::Mul(factor, firstFactor));
            second[r] = hn::Sub(second[r], hn::Mul(factor, secondFactor));
        }
    }
    HWY_UNROLL(4)
    for (std::size_t r = 0; r < kTileRows; ++r) {
        hn::Store(first[r], d, block[row + r].columns + column);
        hn::Store(second[r], d, block[row + r].columns + next);
    }
}

void subtractLinesAbove(const Line* left, const Line* right, std::size_t count, Line* block) {
    const std::size_t columns = 2 * hn::Lanes(Lanes());
    for (std::size_t chunk = 0; chunk < count; chunk += kChunkLines) {
        const std::size_t lines = std::min(kChunkLines, count - chunk);
        for (std::size_t row = 0; row < kBlock; row += kTileRows) {
            for (std::size_t column = 0; column < kBlock; column += columns) {
                subtractTile(left + chunk, right + chunk, lines, row, column, block);
            }
        }
    }
}

inline void subtractLine(double factor, const Line& line, Line& target) {
    for (std::size_t c = 0; c < kBlock; ++c) {
        target.columns[c] -= factor * line.columns[c];
    }
}

inline void scaleLine(double factor, Line& line) {
    for (double& value : line.columns) {
        value *= factor;
    }
}

/// Finishes the rows of a block beside the finished triangle on their diagonal.
void finishRows(const Line* triangle, const double* reciprocals, Line* block) {
    for (std::size_t r = 0; r < kBlock; ++r) {
        for (std::size_t k = 0; k < r; ++k) {
            subtractLine(triangle[k].columns[r], block[k], block[r]);
        }
        scaleLine(reciprocals[r], block[r]);
    }
}

/// Finishes the first `rows` rows of a diagonal block. What is left of the diagonal has no meaning.
/// @return false at a pivot that is not positive
bool finishTriangle(std::size_t rows, double* reciprocals, Line* block) {
    for (std::size_t r = 0; r < rows; ++r) {
        for (std::size_t k = 0; k < r; ++k) {
            subtractLine(block[k].columns[r], block[k], block[r]);
        }
        const double pivot = block[r].columns[r];
        if (!(pivot > 0.0)) {
            return false;
        }
        reciprocals[r] = 1.0 / std::sqrt(pivot);
        scaleLine(reciprocals[r], block[r]);
    }
    return true;
}

} // namespace

bool factorise(const PanelMatrix& matrix) {
    for (std::size_t p = 0; p < matrix.panels(); ++p) {
        Line* const panel = matrix.panel(p);
        for (std::size_t i = 0; i < p; ++i) {
            const Line* const left = matrix.panel(i);
            const std::size_t above = i * kBlock;
            subtractLinesAbove(left, panel, above, panel + above);
            finishRows(left + above, matrix.reciprocals + above, panel + above);
        }
        const std::size_t above = p * kBlock;
        const std::size_t rows = std::min(kBlock, matrix.unknowns - above);
        subtractLinesAbove(panel, panel, above, panel + above);
        if (!finishTriangle(rows, matrix.reciprocals + above, panel + above)) {
            return false;
        }
    }
    return true;
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(factorise);

namespace {

/// The upper half of the matrix with the right-hand side as its last column, padded with zeros.
void fillPanels(const cv::Mat& matrix, const cv::Mat& rightHand, const PanelMatrix& panels) {
    const std::size_t n = panels.unknowns;
    for (std::size_t p = 0; p < panels.panels(); ++p) {
        Line* const panel = panels.panel(p);
        const std::size_t firstColumn = p * kBlock;
        const std::size_t columns = std::min(kBlock, n - firstColumn);
        for (std::size_t row = 0; row < firstColumn + kBlock; ++row) {
            Line& line = panel[row];
            std::fill(std::begin(line.columns), std::end(line.columns), 0.0);
            if (row < n) {
                const double* const values = matrix.ptr<double>(static_cast<int>(row));
                std::copy_n(values + firstColumn, columns, line.columns);
            }
        }
    }
    Line* const last = panels.panel(n / kBlock);
    for (std::size_t row = 0; row < n; ++row) {
        last[row].columns[n % kBlock] = rightHand.at<double>(static_cast<int>(row));
    }
}

/// Solves U x = y, with y in the last column of the panels.
void substituteBack(const PanelMatrix& panels, double* x) {
    const std::size_t n = panels.unknowns;
    const Line* const last = panels.panel(n / kBlock);
    for (std::size_t row = 0; row < n; ++row) {
        x[row] = last[row].columns[n % kBlock];
    }
    for (std::size_t k = n; k-- > 0;) {
        x[k] *= panels.reciprocals[k];
        const Line* const panel = panels.panel(k / kBlock);
        for (std::size_t row = 0; row < k; ++row) {
            x[row] -= panel[row].columns[k % kBlock] * x[k];
        }
    }
}

} // namespace

bool solvePositiveDefinite(const cv::Mat& matrix, const cv::Mat& rightHand, cv::Mat& x) {
    const auto unknowns = static_cast<std::size_t>(matrix.rows);
    const std::size_t panels = unknowns / kBlock + 1;
    const auto lines = std::make_unique_for_overwrite<Line[]>(panelStart(panels));
    std::vector<double> reciprocals(panels * kBlock);
    const PanelMatrix factor{lines.get(), reciprocals.data(), unknowns};
    fillPanels(matrix, rightHand, factor);
    if (!HWY_DYNAMIC_DISPATCH(factorise)(factor)) {
        return false;
    }
    substituteBack(factor, x.ptr<double>());
    return true;
}

} // namespace vel
#endif
