#include "restoration/secondpass/DctFilter.h"

#include "restoration/secondpass/blockRows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace restoration {
namespace {

constexpr std::size_t kBlockSide = 8;

/// Less noise counts as this much: a standard deviation of a 100,000th of white.
constexpr float kLeastVariance = 1e-10f;

template <class Float>
using BlockRows = std::array<Float*, kBlockSide>;

/// The rows `first`..`first` + 7 of a circular plane of `side` rows.
template <class Float>
BlockRows<Float> circularRows(Float* plane, std::size_t side, std::size_t first) {
    BlockRows<Float> rows;
    for (std::size_t r = 0; r < kBlockSide; ++r) {
        rows[r] = plane + (first + r) % side * side;
    }
    return rows;
}

/// Copies the columns of all rows so that those of the same phase are neighbours.
void sortPhases(const Plane& plane, std::size_t step, float* sorted) {
    const auto side = static_cast<std::size_t>(plane.width());
    for (std::size_t y = 0; y < side; ++y) {
        const float* row = plane.row(static_cast<int>(y));
        for (std::size_t phase = 0; phase < step; ++phase) {
            for (std::size_t x = phase; x < side; x += step) {
                *sorted++ = row[x];
            }
        }
    }
}

/// Undoes `sortPhases` for one row.
void mergePhases(const float* sorted, std::size_t side, std::size_t step, float* row) {
    for (std::size_t phase = 0; phase < step; ++phase) {
        for (std::size_t x = phase; x < side; x += step) {
            row[x] = *sorted++;
        }
    }
}

/// Adds what the blocks wrote behind the last column of a phase to its first columns.
void foldWrap(const PhasedLine& line, std::size_t lineCount, float* lines) {
    for (std::size_t phase = 0; phase < lineCount * line.step; ++phase) {
        float* first = lines + phase * line.pitch();
        for (std::size_t i = 0; i < PhasedLine::kWrap; ++i) {
            first[i] += first[line.phaseColumns() + i];
        }
    }
}

HardLimits hardLimits(const DctNoise& noise, float threshold) {
    HardLimits limits{{}, {}, noise.base, noise.slope};
    for (std::size_t k = 0; k < limits.limits.size(); ++k) {
        limits.variances[k] = std::max(kLeastVariance, noise.variances[k]);
        limits.limits[k] = 8 * threshold * std::sqrt(limits.variances[k]);
    }
    return limits;
}

} // namespace

void DctFilter::shrink(const Plane& noisy, const DctNoise& noise, float threshold,
                       const BlockLattice& lattice, Plane& out, const Cancellation& cancellation) {
    const auto side = static_cast<std::size_t>(noisy.width());
    const auto step = static_cast<std::size_t>(lattice.step);
    const PhasedLine line{side, step};
    const HardLimits limits = hardLimits(noise, threshold);
    allocate(side, line.floats());
    float* noisyLines = m_lines.data();
    float* sums = noisyLines + kBlockSide * line.floats();
    float* weights = sums + kBlockSide * line.floats();
    sortPhases(noisy, step, m_noisy.data());
    for (std::size_t i = 0; i < side / step; ++i) {
        cancellation.check();
        const std::size_t first = i * step + static_cast<std::size_t>(lattice.row);
        const int moved = lattice.column + (i % 2 == 1 ? lattice.shift : 0);
        forwardVertical(circularRows<const float>(m_noisy.data(), side, first).data(), line,
                        noisyLines);
        std::fill_n(sums, (kBlockSide + 1) * line.floats(), 0.0f);
        shrinkBlocks(noisyLines, line, static_cast<std::size_t>(moved) % step, limits, sums,
                     weights);
        foldWrap(line, kBlockSide + 1, sums);
        addInverseVertical(sums, weights, line, circularRows(m_sum.data(), side, first).data(),
                           circularRows(m_weights.data(), side, first).data());
    }
    for (std::size_t y = 0; y < side; ++y) {
        float* sum = m_sum.data() + y * side;
        divideByWeights(m_weights.data() + y * side, sum, side);
        mergePhases(sum, side, step, out.row(static_cast<int>(y)));
    }
}

/// The sums and weights of the plane become 0.
void DctFilter::allocate(std::size_t side, std::size_t lineFloats) {
    const std::size_t pixels = side * side;
    m_noisy.resize(pixels);
    m_sum.resize(pixels);
    m_weights.resize(pixels);
    m_lines.resize((2 * kBlockSide + 1) * lineFloats);
    std::fill_n(m_sum.data(), pixels, 0.0f);
    std::fill_n(m_weights.data(), pixels, 0.0f);
}

} // namespace restoration
