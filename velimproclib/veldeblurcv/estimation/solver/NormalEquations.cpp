#include "velimproclib/veldeblurcv/estimation/solver/NormalEquations.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

// How the data moves. A batch of pixels is a matrix X of 16-bit integers with one column for each
// unknown, one column for the observations, and six rows for each pixel. Rows are zipped in pairs:
// one 32-bit lane holds two factors of one column, and a multiply-add of neighbouring 16-bit lanes
// (pmaddwd) advances a sum by two rows. Sixteen columns form a panel, stored contiguously row pair
// by row pair, with a 64-byte line for each pair. The product X^T X is computed tile by tile: rows
// of a tile are broadcast lanes, columns of a tile are vectors, and the sums of a tile stay in
// registers for a chunk of pixels. Then they are added to the doubles of the result. Both factors
// come from the same panels, so nothing is packed twice. The observations are the last row of the
// product.

#ifndef VEL_NORMAL_EQUATIONS_LAYOUT
#define VEL_NORMAL_EQUATIONS_LAYOUT
namespace vel {
namespace {

constexpr int kPairsPerPixel = 3;
/// The square of an odd side is 1 more than a multiple of 8. With the row of the observations, the
/// last tile of a square kernel has two rows.
constexpr int kTailRows = 2;
constexpr int kPanelColumns = 16;
/// Transposed copies of a patch that packing needs: one as it is, and three without gaps between
/// columns.
constexpr std::size_t kPatchCopies = 4;
/// Side of the square pieces that threads take; a multiple of the sides of every tile.
constexpr int kBlock = 64;
/// The largest term of one pixel in one sum: three orders within 255 and three within 510.
constexpr std::int64_t kGreatestTerm = 3 * (255 * 255 + 510 * 510);
/// Pixels after which the sums of a tile leave the registers. The panels of a block then stay in
/// the second-level cache, and those of a tile in the first-level cache.
constexpr std::int64_t kChunkPixels = 64;
static_assert(kChunkPixels * kGreatestTerm <= INT32_MAX, "a chunk must not overflow 32-bit sums");
/// Each batch has two barriers: large batches keep them rare, and 8 MB stay in a third-level cache.
constexpr std::int64_t kBatchBytes = 8 << 20;
constexpr std::int64_t kMostBatchPixels = 1 << 14;

/// Two 16-bit integers in one lane.
constexpr std::int32_t zip(int first, int second) noexcept {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(second) << 16) |
                                     (static_cast<std::uint32_t>(first) & 0xFFFFu));
}

struct PackedBatch {
    const std::int32_t* lines;
    std::size_t panelStride; ///< 32-bit lanes from one panel to the next
    std::int64_t pixels;     ///< used slots
};

/// Consecutive pixels of a batch.
struct Chunk {
    const std::int32_t* lines;
    std::size_t panelStride;
    std::size_t pairs; ///< row pairs

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

    /// Size of one transposed copy of a patch, with two more rows and columns and the excess of
    /// vector loads and stores.
    std::size_t bytes() const noexcept { return (width + 2) * (height + 2) + 64; }
};

} // namespace
} // namespace vel
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/estimation/solver/NormalEquations.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

/// The bytes of a patch, column by column without gaps: from its first, its second and its third
/// row on.
struct PatchColumns {
    std::uint8_t* fromFirst;
    std::uint8_t* fromSecond;
    std::uint8_t* fromThird;
};

/// The six derivatives, zipped into three pairs, of the 16 points from `at` on. The next column
/// follows after `right` bytes.
inline void derivePanel(const PatchColumns& columns, std::size_t at, std::size_t right,
                        std::int32_t* HWY_RESTRICT pairs) {
    const std::uint8_t* HWY_RESTRICT value = columns.fromFirst + at;
    const std::uint8_t* HWY_RESTRICT below = columns.fromSecond + at;
    const std::uint8_t* HWY_RESTRICT below2 = columns.fromThird + at;
    const std::uint8_t* HWY_RESTRICT next = value + right;
    const std::uint8_t* HWY_RESTRICT next2 = next + right;
    const std::uint8_t* HWY_RESTRICT belowNext = below + right;
    for (int k = 0; k < kPanelColumns; ++k) {
        pairs[k] = zip(value[k], next[k] - value[k]);
    }
    for (int k = 0; k < kPanelColumns; ++k) {
        pairs[kPanelColumns + k] = zip(below[k] - value[k], next2[k] - 2 * next[k] + value[k]);
    }
    for (int k = 0; k < kPanelColumns; ++k) {
        pairs[2 * kPanelColumns + k] =
            zip(below2[k] - 2 * below[k] + value[k], belowNext[k] - next[k] - below[k] + value[k]);
    }
}

#if HWY_TARGET == HWY_SCALAR

inline void transpose8x8(const std::uint8_t* in, std::ptrdiff_t inStep, std::uint8_t* out,
                         std::size_t outStep) {
    for (int r = 0; r < 8; ++r) {
        for (int c = 0; c < 8; ++c) {
            out[static_cast<std::size_t>(c) * outStep + static_cast<std::size_t>(r)] =
                in[r * inStep + c];
        }
    }
}

constexpr int kTileRows = 4;
constexpr int kVectorColumns = 4;

template <int kRows, int kVectors>
void multiplyTile(const std::int32_t* rows, const std::int32_t* const* columns, std::size_t pairs,
                  std::int32_t* HWY_RESTRICT tile) {
    constexpr int kColumns = kVectors * kVectorColumns;
    std::int32_t sums[kRows * kColumns] = {};
    for (std::size_t p = 0; p < pairs; ++p) {
        for (int r = 0; r < kRows; ++r) {
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
    std::copy_n(sums, kRows * kColumns, tile);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

inline void transpose8x8(const std::uint8_t* in, std::ptrdiff_t inStep,
                         std::uint8_t* HWY_RESTRICT out, std::size_t outStep) {
    const hn::FixedTag<std::uint8_t, 16> d8;
    const hn::Half<decltype(d8)> row;
    const hn::Repartition<std::uint16_t, decltype(d8)> d16;
    const hn::Repartition<std::uint32_t, decltype(d8)> d32;
    // Interleaves pairs of rows, then fours, then all eight.
    const auto twoRows = [&](int r) {
        const auto first = hn::ZeroExtendVector(d8, hn::LoadU(row, in + r * inStep));
        const auto second = hn::ZeroExtendVector(d8, hn::LoadU(row, in + (r + 1) * inStep));
        return hn::BitCast(d16, hn::InterleaveLower(d8, first, second));
    };
    const auto rows01 = twoRows(0);
    const auto rows23 = twoRows(2);
    const auto rows45 = twoRows(4);
    const auto rows67 = twoRows(6);
    const auto upperLeft = hn::BitCast(d32, hn::InterleaveLower(d16, rows01, rows23));
    const auto upperRight = hn::BitCast(d32, hn::InterleaveUpper(d16, rows01, rows23));
    const auto lowerLeft = hn::BitCast(d32, hn::InterleaveLower(d16, rows45, rows67));
    const auto lowerRight = hn::BitCast(d32, hn::InterleaveUpper(d16, rows45, rows67));
    const auto storeColumns = [&](std::size_t c, auto columns) {
        const auto bytes = hn::BitCast(d8, columns);
        hn::StoreU(hn::LowerHalf(row, bytes), row, out + c * outStep);
        hn::StoreU(hn::UpperHalf(row, bytes), row, out + (c + 1) * outStep);
    };
    storeColumns(0, hn::InterleaveLower(d32, upperLeft, lowerLeft));
    storeColumns(2, hn::InterleaveUpper(d32, upperLeft, lowerLeft));
    storeColumns(4, hn::InterleaveLower(d32, upperRight, lowerRight));
    storeColumns(6, hn::InterleaveUpper(d32, upperRight, lowerRight));
}

using Lanes32 = hn::CappedTag<std::int32_t, kPanelColumns>;
using Lanes16 = hn::Repartition<std::int16_t, Lanes32>;
constexpr int kVectorColumns = static_cast<int>(hn::MaxLanes(Lanes32()));
// Two sums per row must fit the registers: 32 where vectors have 64 bytes, else 16, and 8 on 32-bit
// x86.
constexpr int kTileRows = HWY_ARCH_X86_32 ? 2 : (kVectorColumns == kPanelColumns ? 8 : 4);

/// The sums of `kRows` broadcast rows with `kVectors` vectors of columns over `pairs` row
/// pairs, row by row into `tile`.
template <int kRows, int kVectors>
void multiplyTile(const std::int32_t* HWY_RESTRICT rows, const std::int32_t* const* columns,
                  std::size_t pairs, std::int32_t* HWY_RESTRICT tile) {
    const Lanes32 d32;
    const Lanes16 d16;
    using Sum = hn::Vec<Lanes32>;
    using Factor = hn::Vec<Lanes16>;
    Sum even[kRows][kVectors];
    Sum odd[kRows][kVectors];
    HWY_UNROLL(8)
    for (int r = 0; r < kRows; ++r) {
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
        for (int r = 0; r < kRows; ++r) {
            const Factor factor = hn::BitCast(d16, hn::Set(d32, row[r]));
            HWY_UNROLL(2)
            for (int v = 0; v < kVectors; ++v) {
                even[r][v] =
                    hn::ReorderWidenMulAccumulate(d32, factor, column[v], even[r][v], odd[r][v]);
            }
        }
    }
    HWY_UNROLL(8)
    for (int r = 0; r < kRows; ++r) {
        HWY_UNROLL(2)
        for (int v = 0; v < kVectors; ++v) {
            hn::StoreU(hn::RearrangeToOddPlusEven(even[r][v], odd[r][v]), d32,
                       tile + (r * kVectors + v) * kVectorColumns);
        }
    }
}

#endif

/// out[c * outStep + r] = in[r * inStep + c]
inline void transpose(const std::uint8_t* in, std::ptrdiff_t inStep, std::size_t rows,
                      std::size_t columns, std::uint8_t* out, std::size_t outStep) {
    if (rows < 8 || columns < 8) {
        for (std::size_t r = 0; r < rows; ++r) {
            const std::uint8_t* row = in + static_cast<std::ptrdiff_t>(r) * inStep;
            for (std::size_t c = 0; c < columns; ++c) {
                out[c * outStep + r] = row[c];
            }
        }
        return;
    }
    // The last squares overlap the previous ones, so that nothing outside the patch is read.
    for (std::size_t nextRow = 0; nextRow < rows; nextRow += 8) {
        const std::size_t r = std::min(nextRow, rows - 8);
        for (std::size_t nextColumn = 0; nextColumn < columns; nextColumn += 8) {
            const std::size_t c = std::min(nextColumn, columns - 8);
            transpose8x8(in + static_cast<std::ptrdiff_t>(r) * inStep + c, inStep,
                         out + c * outStep + r, outStep);
        }
    }
}

/// Copies in steps of 16 bytes, up to 15 bytes more than `count`.
inline void copyInSteps(const std::uint8_t* HWY_RESTRICT from, std::size_t count,
                        std::uint8_t* HWY_RESTRICT to) {
    for (std::size_t k = 0; k < count; k += 16) {
        std::memcpy(to + k, from + k, 16);
    }
}

template <int kRows, int kVectors>
void addTileOfVectors(const Chunk& chunk, const BlockArea& area, std::int64_t row,
                      std::int64_t column, const NormalSums& sums) {
    constexpr int kColumns = kVectors * kVectorColumns;
    const std::int32_t* columns[kVectors];
    for (int v = 0; v < kVectors; ++v) {
        columns[v] = chunk.column(column + v * kVectorColumns);
    }
    alignas(64) std::int32_t tile[kRows * kColumns];
    multiplyTile<kRows, kVectors>(chunk.column(row), columns, chunk.pairs, tile);

    const auto width = static_cast<int>(std::min<std::int64_t>(kColumns, area.columnEnd - column));
    const auto height = static_cast<int>(std::min<std::int64_t>(kRows, area.rowEnd - row));
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

template <int kRows>
void addTile(const Chunk& chunk, const BlockArea& area, std::int64_t row, std::int64_t column,
             bool oneVector, const NormalSums& sums) {
    if (oneVector) {
        addTileOfVectors<kRows, 1>(chunk, area, row, column, sums);
    } else {
        addTileOfVectors<kRows, 2>(chunk, area, row, column, sums);
    }
}

/// Adds one chunk to those tiles of a block that contain elements of the lower half.
void accumulateChunk(const Chunk& chunk, const BlockArea& area, const NormalSums& sums) {
    for (std::int64_t column = area.columnBegin; column < area.columnEnd;
         column += 2 * kVectorColumns) {
        for (std::int64_t row = area.rowBegin; row < area.rowEnd; row += kTileRows) {
            const std::int64_t lastColumn = std::min(area.columnEnd, row + kTileRows) - 1;
            if (column > lastColumn) {
                continue;
            }
            const bool oneVector = column + kVectorColumns > lastColumn;
            if (area.rowEnd - row > kTailRows) {
                addTile<kTileRows>(chunk, area, row, column, oneVector, sums);
            } else {
                addTile<kTailRows>(chunk, area, row, column, oneVector, sums);
            }
        }
    }
}

} // namespace

void packPixel(const PatchShape& shape, std::uint8_t* HWY_RESTRICT workspace,
               const std::uint8_t* taps, std::ptrdiff_t tapStep, const std::int32_t* observed,
               std::int32_t* HWY_RESTRICT lines, std::size_t panelStride) {
    // Unknowns are numbered down the columns of the kernel, therefore the patch is transposed.
    const std::size_t patchRows = shape.height + 2;
    const std::size_t patchColumns = shape.width + 2;
    std::uint8_t* const patch = workspace;
    transpose(taps, tapStep, patchRows, patchColumns, patch, patchRows);
    // Without gaps, columns of the kernel's height have their points in the order of the unknowns.
    // Each copy overwrites the excess of the previous one.
    const std::size_t part = shape.bytes();
    const PatchColumns columns{workspace + part, workspace + 2 * part, workspace + 3 * part};
    for (std::size_t i = 0; i < patchColumns; ++i) {
        const std::uint8_t* column = patch + i * patchRows;
        const std::size_t point = i * shape.height;
        copyInSteps(column, shape.height, columns.fromFirst + point);
        copyInSteps(column + 1, shape.height, columns.fromSecond + point);
        copyInSteps(column + 2, shape.height, columns.fromThird + point);
    }
    const std::size_t unknowns = shape.width * shape.height;
    for (std::size_t u = 0; u < unknowns; u += kPanelColumns) {
        derivePanel(columns, u, shape.height, lines + u / kPanelColumns * panelStride);
    }
    // The observations follow the last unknown, and zeros fill the panel.
    std::int32_t* last = lines + unknowns / kPanelColumns * panelStride;
    for (std::size_t p = 0; p < kPairsPerPixel; ++p) {
        std::int32_t* line = last + p * kPanelColumns;
        line[unknowns % kPanelColumns] = observed[p];
        std::fill(line + unknowns % kPanelColumns + 1, line + kPanelColumns, 0);
    }
}

void accumulateBlock(const PackedBatch& batch, const BlockArea& area, const NormalSums& sums) {
    for (std::int64_t pixel = 0; pixel < batch.pixels; pixel += kChunkPixels) {
        const std::int64_t pixels = std::min(kChunkPixels, batch.pixels - pixel);
        accumulateChunk({batch.lines + pixel * kPairsPerPixel * kPanelColumns, batch.panelStride,
                         static_cast<std::size_t>(pixels * kPairsPerPixel)},
                        area, sums);
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
    return static_cast<int>(
        std::clamp(kBatchBytes / bytesPerPixel, kChunkPixels, kMostBatchPixels));
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
      m_panels(roundUp(m_unknowns + 1, kLineColumns) / kLineColumns),
      m_batchPixels(pixelsPerBatch(m_panels)) {
    static_assert(kLineColumns == kPanelColumns);
    const std::int64_t blockRows = roundUp(m_unknowns + 1, kBlock) / kBlock;
    m_blockCount = blockRows * (blockRows + 1) / 2;
    const std::int64_t lines = m_panels * m_batchPixels * kPairsPerPixel;
    if (lines > std::numeric_limits<std::ptrdiff_t>::max() / std::int64_t{sizeof(Line)}) {
        throw std::bad_alloc();
    }
    // Packing a pixel writes all of its lines, so they need no initial value.
    m_lines = std::make_unique_for_overwrite<Line[]>(static_cast<std::size_t>(lines));

    const PatchShape shape{static_cast<std::size_t>(kernelWidth),
                           static_cast<std::size_t>(kernelHeight)};
    m_workspaces.resize(static_cast<std::size_t>(threads));
    for (std::vector<std::uint8_t>& workspace : m_workspaces) {
        workspace.resize(kPatchCopies * shape.bytes());
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
    std::int32_t* lines =
        m_lines[0].pairs + static_cast<std::size_t>(slot) * kPairsPerPixel * kLineColumns;
    HWY_DYNAMIC_DISPATCH(packPixel)
    (shape, m_workspaces[static_cast<std::size_t>(thread)].data(), taps, tapStep, observedPairs,
     lines, panelStride);
}

void CNormalEquations::accumulate(std::int64_t block, int pixels,
                                  const NormalSums& sums) const noexcept {
    const PackedBatch batch{m_lines[0].pairs,
                            static_cast<std::size_t>(m_batchPixels) * kPairsPerPixel * kLineColumns,
                            pixels};
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
