#include "velimproclib/veldeblurcv/NormalEquations.h"

#include <algorithm>
#include <cmath>
#include <cstring>

// How the data moves. A batch of pixels is a matrix X of 16-bit integers with one column for each
// unknown, one more column for the observations, and six rows for each pixel. Two rows at a time
// are zipped, so that one 32-bit lane holds two factors of one column and a multiply-add of
// neighbouring 16-bit lanes (pmaddwd) advances a sum by two rows. Sixteen columns make a panel,
// stored contiguously row pair by row pair: a 64-byte line for each pair. The product X^T X is then
// computed tile by tile: rows of the tile are broadcast lanes, columns of the tile are vectors, and
// the tile's sums stay in registers for the whole batch. Only then are they added to the doubles of
// the result. Panels serve both factors, so nothing is packed twice; the observations ride along as
// the matrix's last row.

#ifndef VEL_NORMAL_EQUATIONS_LAYOUT
#define VEL_NORMAL_EQUATIONS_LAYOUT
namespace vel {
namespace {

constexpr int kPairsPerPixel = 3;
constexpr int kPanelColumns = 16;
/// Sides of the square pieces that threads take; a multiple of every tile's sides.
constexpr int kBlock = 32;
/// The greatest that one pixel adds to one sum: three orders within 255 and three within 510.
constexpr std::int64_t kGreatestTerm = 3 * (255 * 255 + 510 * 510);
constexpr int kFewestBatchPixels = 64;
constexpr int kMostBatchPixels = 2048;
static_assert(kMostBatchPixels * kGreatestTerm <= INT32_MAX,
              "a batch must not overflow 32-bit sums");
/// A batch of this size stays in the second-level cache.
constexpr std::int64_t kBatchBytes = 1 << 20;

/// Two 16-bit integers in one lane.
constexpr std::int32_t zip(int first, int second) noexcept {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(second) << 16) |
                                     (static_cast<std::uint32_t>(first) & 0xFFFFu));
}

struct PackedBatch {
    const std::int32_t* lines;
    std::size_t panelStride; ///< 32-bit lanes from one panel to the next
    std::size_t pairs;       ///< row pairs that take part

    const std::int32_t* column(std::int64_t c) const noexcept {
        return lines + static_cast<std::size_t>(c / kPanelColumns) * panelStride +
               static_cast<std::size_t>(c % kPanelColumns);
    }
};

struct BlockArea {
    std::int64_t rowBegin;
    std::int64_t rowEnd;
    std::int64_t columnBegin;
    std::int64_t columnEnd;
    std::int64_t unknowns;
};

struct PatchShape {
    std::size_t width;  ///< kernel columns
    std::size_t height; ///< kernel rows
};

} // namespace
} // namespace vel
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/NormalEquations.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

/// The six derivatives, zipped into three pairs, of `n` (a multiple of 16) points. Points follow
/// each other down a column; `right` samples on lies the next column.
inline void deriveColumn(const std::int16_t* HWY_RESTRICT at, std::size_t right, std::size_t n,
                         std::int32_t* HWY_RESTRICT pairs0, std::int32_t* HWY_RESTRICT pairs1,
                         std::int32_t* HWY_RESTRICT pairs2) {
    const std::int16_t* HWY_RESTRICT next = at + right;
    const std::int16_t* HWY_RESTRICT afterNext = next + right;
    for (std::size_t begin = 0; begin < n; begin += kPanelColumns) {
        for (std::size_t k = begin; k < begin + kPanelColumns; ++k) {
            const int value = at[k];
            pairs0[k] = zip(value, next[k] - value);
            pairs1[k] = zip(at[k + 1] - value, afterNext[k] - 2 * next[k] + value);
            pairs2[k] =
                zip(at[k + 2] - 2 * at[k + 1] + value, next[k + 1] - next[k] - at[k + 1] + value);
        }
    }
}

#if HWY_TARGET == HWY_SCALAR

constexpr int kTileRows = 4;
constexpr int kVectorColumns = 4;

template <int kVectors>
void multiplyTile(const std::int32_t* rows, const std::int32_t* const* columns, std::size_t pairs,
                  std::int32_t* HWY_RESTRICT tile) {
    constexpr int kColumns = kVectors * kVectorColumns;
    std::int32_t sums[kTileRows * kColumns] = {};
    for (std::size_t p = 0; p < pairs; ++p) {
        for (int r = 0; r < kTileRows; ++r) {
            const std::int32_t row = rows[p * kPanelColumns + static_cast<std::size_t>(r)];
            const std::int32_t rowLow = static_cast<std::int16_t>(row);
            const std::int32_t rowHigh = row >> 16;
            for (int c = 0; c < kColumns; ++c) {
                const std::int32_t column =
                    columns[c / kVectorColumns]
                           [p * kPanelColumns + static_cast<std::size_t>(c % kVectorColumns)];
                sums[r * kColumns + c] +=
                    rowLow * static_cast<std::int16_t>(column) + rowHigh * (column >> 16);
            }
        }
    }
    std::copy_n(sums, kTileRows * kColumns, tile);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Lanes32 = hn::CappedTag<std::int32_t, kPanelColumns>;
using Lanes16 = hn::Repartition<std::int16_t, Lanes32>;
constexpr int kVectorColumns = static_cast<int>(hn::MaxLanes(Lanes32()));
// Twice as many sums as rows must fit the registers: 32 where vectors are 64 bytes, else 16.
constexpr int kTileRows = kVectorColumns == kPanelColumns ? 8 : 4;

/// The sums of `kTileRows` broadcast rows with `kVectors` vectors of columns over `pairs` row
/// pairs, row by row into `tile`.
template <int kVectors>
void multiplyTile(const std::int32_t* HWY_RESTRICT rows, const std::int32_t* const* columns,
                  std::size_t pairs, std::int32_t* HWY_RESTRICT tile) {
    const Lanes32 d32;
    const Lanes16 d16;
    using Sum = hn::Vec<Lanes32>;
    using Factor = hn::Vec<Lanes16>;
    Sum even[kTileRows][kVectors];
    Sum odd[kTileRows][kVectors];
    HWY_UNROLL(8)
    for (int r = 0; r < kTileRows; ++r) {
        HWY_UNROLL(2)
        for (int v = 0; v < kVectors; ++v) {
            even[r][v] = hn::Zero(d32);
            odd[r][v] = hn::Zero(d32);
        }
    }
    const std::int32_t* HWY_RESTRICT left = columns[0];
    const std::int32_t* HWY_RESTRICT right = columns[kVectors - 1];
    for (std::size_t p = 0; p < pairs; ++p) {
        const std::int32_t* HWY_RESTRICT row = rows + p * kPanelColumns;
        Factor column[kVectors];
        column[0] = hn::BitCast(d16, hn::Load(d32, left + p * kPanelColumns));
        if constexpr (kVectors == 2) {
            column[1] = hn::BitCast(d16, hn::Load(d32, right + p * kPanelColumns));
        }
        HWY_UNROLL(8)
        for (int r = 0; r < kTileRows; ++r) {
            const Factor factor = hn::BitCast(d16, hn::Set(d32, row[r]));
            HWY_UNROLL(2)
            for (int v = 0; v < kVectors; ++v) {
                even[r][v] =
                    hn::ReorderWidenMulAccumulate(d32, factor, column[v], even[r][v], odd[r][v]);
            }
        }
    }
    HWY_UNROLL(8)
    for (int r = 0; r < kTileRows; ++r) {
        HWY_UNROLL(2)
        for (int v = 0; v < kVectors; ++v) {
            hn::StoreU(hn::RearrangeToOddPlusEven(even[r][v], odd[r][v]), d32,
                       tile + (r * kVectors + v) * kVectorColumns);
        }
    }
}

#endif

template <int kVectors>
void addTile(const PackedBatch& batch, const BlockArea& area, std::int64_t row, std::int64_t column,
             const NormalSums& sums) {
    constexpr int kColumns = kVectors * kVectorColumns;
    const std::int32_t* columns[kVectors];
    for (int v = 0; v < kVectors; ++v) {
        columns[v] = batch.column(column + v * kVectorColumns);
    }
    alignas(64) std::int32_t tile[kTileRows * kColumns];
    multiplyTile<kVectors>(batch.column(row), columns, batch.pairs, tile);

    const auto width = static_cast<int>(std::min<std::int64_t>(kColumns, area.columnEnd - column));
    const auto height = static_cast<int>(std::min<std::int64_t>(kTileRows, area.rowEnd - row));
    for (int r = 0; r < height; ++r) {
        double* target = row + r == area.unknowns
                             ? sums.rightHand
                             : sums.matrix + static_cast<std::size_t>(row + r) * sums.stride;
        const std::int32_t* HWY_RESTRICT terms = tile + r * kColumns;
        double* HWY_RESTRICT first = target + column;
        for (int c = 0; c < width; ++c) {
            first[c] += terms[c];
        }
    }
}

} // namespace

void packPixel(const PatchShape& shape, std::int16_t* HWY_RESTRICT patch,
               std::int32_t* HWY_RESTRICT pairs, const std::uint8_t* taps, std::ptrdiff_t tapStep,
               const std::int32_t* observed, std::int32_t* HWY_RESTRICT lines,
               std::size_t panelStride, std::size_t panels) {
    // Unknowns run down the columns of the kernel, so the patch is turned to run that way too.
    const std::size_t columnStep = shape.height + 2;
    for (std::size_t r = 0; r < shape.height + 2; ++r) {
        const std::uint8_t* row = taps + static_cast<std::ptrdiff_t>(r) * tapStep;
        for (std::size_t c = 0; c < shape.width + 2; ++c) {
            patch[c * columnStep + r] = row[c];
        }
    }
    // Each column is derived in whole vectors; what that writes past the column's end, the next
    // column and at last the observations overwrite.
    const std::size_t pairStep = panels * kPanelColumns + kPanelColumns;
    const std::size_t rounded = (shape.height + kPanelColumns - 1) / kPanelColumns * kPanelColumns;
    std::int32_t* const rowsOfPairs[kPairsPerPixel] = {pairs, pairs + pairStep,
                                                       pairs + 2 * pairStep};
    for (std::size_t i = 0; i < shape.width; ++i) {
        const std::size_t first = i * shape.height;
        deriveColumn(patch + i * columnStep, columnStep, rounded, rowsOfPairs[0] + first,
                     rowsOfPairs[1] + first, rowsOfPairs[2] + first);
    }
    const std::size_t unknowns = shape.width * shape.height;
    for (std::size_t p = 0; p < kPairsPerPixel; ++p) {
        std::int32_t* row = rowsOfPairs[p];
        row[unknowns] = observed[p];
        std::fill(row + unknowns + 1, row + panels * kPanelColumns, 0);
        for (std::size_t panel = 0; panel < panels; ++panel) {
            std::memcpy(lines + panel * panelStride + p * kPanelColumns,
                        row + panel * kPanelColumns, kPanelColumns * sizeof(std::int32_t));
        }
    }
}

void accumulateBlock(const PackedBatch& batch, const BlockArea& area, const NormalSums& sums) {
    for (std::int64_t column = area.columnBegin; column < area.columnEnd;
         column += 2 * kVectorColumns) {
        for (std::int64_t row = area.rowBegin; row < area.rowEnd; row += kTileRows) {
            const std::int64_t lastRow = row + kTileRows - 1;
            const std::int64_t lastColumn = std::min(area.columnEnd - 1, lastRow);
            if (column > lastColumn) {
                continue;
            }
            if (column + kVectorColumns > lastColumn) {
                addTile<1>(batch, area, row, column, sums);
            } else {
                addTile<2>(batch, area, row, column, sums);
            }
        }
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(packPixel);
HWY_EXPORT(accumulateBlock);

namespace {

std::int64_t roundUp(std::int64_t value, std::int64_t multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

int pixelsPerBatch(std::int64_t panels) {
    const std::int64_t bytesPerPixel = panels * kPairsPerPixel * 64;
    return static_cast<int>(std::clamp<std::int64_t>(kBatchBytes / bytesPerPixel,
                                                     kFewestBatchPixels, kMostBatchPixels));
}

/// Blocks of the lower half are numbered row by row.
BlockArea areaOfBlock(std::int64_t block, std::int64_t unknowns) {
    auto blockRow =
        static_cast<std::int64_t>((std::sqrt(8.0 * static_cast<double>(block) + 1.0) - 1.0) / 2.0);
    while (blockRow * (blockRow + 1) / 2 > block) {
        --blockRow;
    }
    while ((blockRow + 1) * (blockRow + 2) / 2 <= block) {
        ++blockRow;
    }
    const std::int64_t blockColumn = block - blockRow * (blockRow + 1) / 2;
    const std::int64_t row = blockRow * kBlock;
    const std::int64_t column = blockColumn * kBlock;
    return {row, std::min(row + kBlock, unknowns + 1), column, std::min(column + kBlock, unknowns),
            unknowns};
}

} // namespace

CNormalEquations::CNormalEquations(int kernelWidth, int kernelHeight, int threads)
    : m_kernelWidth(kernelWidth), m_kernelHeight(kernelHeight),
      m_unknowns(std::int64_t{kernelWidth} * kernelHeight),
      m_panels(roundUp(m_unknowns + 1, kBlock) / kLineColumns),
      m_batchPixels(pixelsPerBatch(m_panels)) {
    static_assert(kLineColumns == kPanelColumns);
    const std::int64_t blockRows = roundUp(m_unknowns + 1, kBlock) / kBlock;
    m_blockCount = blockRows * (blockRows + 1) / 2;
    m_lines.resize(static_cast<std::size_t>(m_panels * m_batchPixels * kPairsPerPixel));

    const std::int64_t patch =
        (std::int64_t{kernelWidth} + 2) * (std::int64_t{kernelHeight} + 2) + 2 * kLineColumns;
    const std::int64_t pairs = kPairsPerPixel * (m_panels + 1) * kLineColumns;
    m_workspaces.resize(static_cast<std::size_t>(threads));
    for (Workspace& workspace : m_workspaces) {
        workspace.patch.resize(static_cast<std::size_t>(patch));
        workspace.pairs.resize(static_cast<std::size_t>(pairs));
    }
}

void CNormalEquations::pack(int thread, int slot, const std::uint8_t* taps, std::ptrdiff_t tapStep,
                            const std::uint8_t* observed, std::ptrdiff_t observedStep) noexcept {
    const std::uint8_t* o = observed;
    const std::uint8_t* below = o + observedStep;
    const std::uint8_t* twoBelow = below + observedStep;
    const std::int32_t observedPairs[kPairsPerPixel] = {
        zip(o[0], o[1] - o[0]), zip(below[0] - o[0], o[2] - 2 * o[1] + o[0]),
        zip(twoBelow[0] - 2 * below[0] + o[0], below[1] - o[1] - below[0] + o[0])};

    const PatchShape shape{static_cast<std::size_t>(m_kernelWidth),
                           static_cast<std::size_t>(m_kernelHeight)};
    const std::size_t panelStride =
        static_cast<std::size_t>(m_batchPixels) * kPairsPerPixel * kLineColumns;
    Workspace& workspace = m_workspaces[static_cast<std::size_t>(thread)];
    std::int32_t* lines =
        m_lines.data()->pairs + static_cast<std::size_t>(slot) * kPairsPerPixel * kLineColumns;
    HWY_DYNAMIC_DISPATCH(packPixel)
    (shape, workspace.patch.data(), workspace.pairs.data(), taps, tapStep, observedPairs, lines,
     panelStride, static_cast<std::size_t>(m_panels));
}

void CNormalEquations::accumulate(std::int64_t block, int pixels,
                                  const NormalSums& sums) const noexcept {
    const PackedBatch batch{m_lines.data()->pairs,
                            static_cast<std::size_t>(m_batchPixels) * kPairsPerPixel * kLineColumns,
                            static_cast<std::size_t>(pixels) * kPairsPerPixel};
    HWY_DYNAMIC_DISPATCH(accumulateBlock)(batch, areaOfBlock(block, m_unknowns), sums);
}

void CNormalEquations::mirror(std::int64_t block, const NormalSums& sums) const noexcept {
    const BlockArea area = areaOfBlock(block, m_unknowns);
    const std::int64_t rowEnd = std::min(area.rowEnd, m_unknowns);
    for (std::int64_t row = area.rowBegin; row < rowEnd; ++row) {
        const double* lower = sums.matrix + static_cast<std::size_t>(row) * sums.stride;
        const std::int64_t columnEnd = std::min(area.columnEnd, row);
        for (std::int64_t column = area.columnBegin; column < columnEnd; ++column) {
            sums.matrix[static_cast<std::size_t>(column) * sums.stride +
                        static_cast<std::size_t>(row)] = lower[column];
        }
    }
}

} // namespace vel
#endif
