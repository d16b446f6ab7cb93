#include "velimproclib/primitives/fft/RealFft2D.h"

#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/fft/RealFft2D.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/fft/LaneFft-inl.h"
#include "velimproclib/primitives/fft/TransposeTile-inl.h"

// Rows: a group of 16 rows is transposed tile by tile; its 16 rows become the lanes of one
// transform. The real row of w samples is read as w/2 complex samples (even samples real, odd
// samples imaginary), which is the layout of the transposed tiles. After the complex transform of
// half the length, frequencies k and w/2 - k are joined to the spectrum of the real row, two tiles
// at a time from both ends of the row, and these tiles are transposed back into the column blocks.
//
// Columns: the 16 columns of a block are the lanes.

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

static_assert(kFftLanes == RealFft2D::kLanes && kTileSide == kFftLanes,
              "a tile of the image turns rows into the lanes of one transform");

constexpr std::ptrdiff_t kFloatBytes = sizeof(float);
constexpr std::ptrdiff_t kLaneBytes = kFftLanes * kFloatBytes;
constexpr std::ptrdiff_t kElementBytes = kElementFloats * kFloatBytes;

inline char* bytes(float* p) {
    return reinterpret_cast<char*>(p);
}
inline const char* bytes(const float* p) {
    return reinterpret_cast<const char*>(p);
}

struct Unchanged {
    HWY_INLINE TileVec operator()(TileVec v) const { return v; }
};

struct Scaled {
    TileVec factor;
    HWY_INLINE TileVec operator()(TileVec v) const { return hn::Mul(v, factor); }
};

/// A part of an image that does not fill a tile.
struct SmallTile {
    int rows;
    int columns;
};

/// to(c, r) = from(r, c) times `factor` for a tile that is smaller than 16 by 16.
template <class RowAt>
void transposeSmallTile(SmallTile tile, RowAt rowAt, char* to, std::ptrdiff_t toStepBytes,
                        float factor) {
    for (int r = 0; r < tile.rows; ++r) {
        for (int c = 0; c < tile.columns; ++c) {
            float value;
            std::memcpy(&value, rowAt(r) + c * kFloatBytes, sizeof value);
            value *= factor;
            std::memcpy(bytesAway(to, std::int64_t{toStepBytes} * c) + r * kFloatBytes, &value,
                        sizeof value);
        }
    }
}

HWY_INLINE Complex loadElement(const float* element) {
    const LaneTag d;
    return {hn::Load(d, element), hn::Load(d, element + kFftLanes)};
}

HWY_INLINE void storeElement(const Complex& x, float* element) {
    const LaneTag d;
    hn::Store(x.re, d, element);
    hn::Store(x.im, d, element + kFftLanes);
}

template <class Body>
HWY_INLINE void forEachLane(Body body) {
    for (std::ptrdiff_t lane = 0; lane < kFftLanes; lane += kVectorLanes) {
        body(lane);
    }
}

/// Frequencies 0 and w/2 of real rows, both real, from element 0 of the transform of half length.
inline void joinEnds(const float* from, float* to) {
    forEachLane([&](std::ptrdiff_t lane) HWY_ATTR {
        const Complex z = loadElement(from + lane);
        storeElement({hn::Add(z.re, z.im), hn::Sub(z.re, z.im)}, to + lane);
    });
}

inline void splitEnds(const float* from, float* to) {
    forEachLane([&](std::ptrdiff_t lane) HWY_ATTR {
        const LaneVec half = hn::Set(LaneTag(), 0.5f);
        const Complex x = loadElement(from + lane);
        storeElement({hn::Mul(hn::Add(x.re, x.im), half), hn::Mul(hn::Sub(x.re, x.im), half)},
                     to + lane);
    });
}

struct ElementPair {
    float* low;  ///< of frequency k
    float* high; ///< of frequency w/2 - k
};

/// Frequencies k and w/2 - k of the real rows from those of the transform of half length, or with
/// the conjugate factor the reverse. For k = w/4 the two are the same.
HWY_INLINE void joinPair(ElementPair from, ElementPair to, float factorRe, float factorIm) {
    forEachLane([&](std::ptrdiff_t lane) HWY_ATTR {
        const LaneTag d;
        const Complex a = loadElement(from.low + lane);
        const Complex b = loadElement(from.high + lane);
        const Complex sum{hn::Add(a.re, b.re), hn::Sub(a.im, b.im)};        // a + conj b
        const Complex difference{hn::Sub(a.re, b.re), hn::Add(a.im, b.im)}; // a - conj b
        const Complex even = scale(sum, hn::Set(d, 0.5f));
        const Complex odd = mul(difference, hn::Set(d, factorRe), hn::Set(d, factorIm));
        storeElement({hn::Sub(even.re, odd.re), hn::Sub(odd.im, even.im)}, to.high + lane);
        storeElement(add(even, odd), to.low + lane);
    });
}

/// Working memory of the row transforms.
struct RowMemory {
    explicit RowMemory(const RealFft2D::Tables& tables, float* scratch)
        : elements(scratch),
          low(scratch + static_cast<std::ptrdiff_t>(tables.rows.length) * kElementFloats),
          high(low + kSideElements * kElementFloats) {}

    /// The elements of a tile and the first element of the next.
    static constexpr std::ptrdiff_t kSideElements = kTileSide + 1;

    float* elements; ///< the transform of half length
    float* low;      ///< frequencies of a tile from the low end of the rows
    float* high;     ///< frequencies of a tile from the high end
};

/// One group of rows in the image and in the spectrum.
struct RowGroup {
    RowGroup(const RealFft2D& fft, const RealFft2D::Tables& tables, int group, float* spectrum,
             float* scratch)
        : rows(std::min(fft.height(), kTileSide)), width(fft.width()),
          halfWidth(static_cast<std::ptrdiff_t>(tables.rows.length)), blocks(fft.blockCount()),
          places(tables.rows.places.data()), memory(tables, scratch),
          m_blockRows(spectrum + std::ptrdiff_t{group} * kTileSide * kElementFloats),
          m_blockFloats(static_cast<std::ptrdiff_t>(fft.blockFloats())) {}

    float* element(std::ptrdiff_t frequency) const {
        return memory.elements + static_cast<std::ptrdiff_t>(places[frequency]) * kElementFloats;
    }
    float* blockRow(std::ptrdiff_t block) const { return m_blockRows + block * m_blockFloats; }
    bool fillsTiles() const { return rows == kTileSide && halfWidth >= kTileSide; }

    int rows;
    std::ptrdiff_t width;
    std::ptrdiff_t halfWidth;
    std::ptrdiff_t blocks;
    const std::uint32_t* places;
    RowMemory memory;

private:
    float* m_blockRows;
    std::ptrdiff_t m_blockFloats;
};

/// Loads image columns `left` to `left` + 15 of all rows into elements, two columns each.
inline void loadImageTile(const RowGroup& group, const char* firstRow, std::ptrdiff_t stepBytes,
                          std::ptrdiff_t left) {
    const char* from = firstRow + left * kFloatBytes;
    char* to = bytes(group.memory.elements + left * kFftLanes);
    const auto rowAt = [=](int row)
                           HWY_ATTR { return bytesAway(from, std::int64_t{stepBytes} * row); };
    if (group.fillsTiles()) {
        transposeTile(rowAt, to, kLaneBytes, Unchanged());
        return;
    }
    const auto columns = std::min<std::ptrdiff_t>(group.width, kTileSide);
    std::memset(to, 0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(columns, 2) * kLaneBytes));
    transposeSmallTile({group.rows, static_cast<int>(columns)}, rowAt, to, kLaneBytes, 1.0f);
}

/// Stores elements in the order of `places`, scaled, into image columns `left` to `left` + 15.
inline void storeImageTile(const RowGroup& group, char* firstRow, std::ptrdiff_t stepBytes,
                           std::ptrdiff_t left, float factor) {
    const auto rowAt = [&](int row) HWY_ATTR {
        return bytes(group.element((left + row) / 2) + row % 2 * kFftLanes);
    };
    char* to = firstRow + left * kFloatBytes;
    if (group.fillsTiles()) {
        transposeTile(rowAt, to, stepBytes, Scaled{hn::Set(TileTag(), factor)});
        return;
    }
    const auto columns = static_cast<int>(std::min<std::ptrdiff_t>(group.width, kTileSide));
    transposeSmallTile({columns, group.rows}, rowAt, to, stepBytes, factor);
}

/// Stores the elements at `from`, one for each column of a block, into the group's rows of the
/// block.
inline void storeBlockTile(const RowGroup& group, const float* from, std::ptrdiff_t block) {
    for (const std::ptrdiff_t part : {std::ptrdiff_t{0}, kFftLanes}) {
        const auto rowAt = [=](int row)
                               HWY_ATTR { return bytes(from + part) + row * kElementBytes; };
        char* to = bytes(group.blockRow(block) + part);
        if (group.fillsTiles()) {
            transposeTile(rowAt, to, kElementBytes, Unchanged());
            continue;
        }
        const auto columns = static_cast<int>(std::min<std::ptrdiff_t>(group.halfWidth, kTileSide));
        for (int row = 0; row < group.rows; ++row) {
            std::memset(to + row * kElementBytes, 0, kLaneBytes);
        }
        transposeSmallTile({columns, group.rows}, rowAt, to, kElementBytes, 1.0f);
    }
}

inline void loadBlockTile(const RowGroup& group, std::ptrdiff_t block, float* to) {
    for (const std::ptrdiff_t part : {std::ptrdiff_t{0}, kFftLanes}) {
        const char* from = bytes(group.blockRow(block) + part);
        const auto rowAt = [=](int row) HWY_ATTR { return from + row * kElementBytes; };
        if (group.fillsTiles()) {
            transposeTile(rowAt, bytes(to + part), kElementBytes, Unchanged());
            continue;
        }
        const auto columns = static_cast<int>(std::min<std::ptrdiff_t>(group.halfWidth, kTileSide));
        for (int column = 0; column < columns; ++column) {
            std::memset(bytes(to + part) + column * kElementBytes, 0, kLaneBytes);
        }
        transposeSmallTile({group.rows, columns}, rowAt, bytes(to + part), kElementBytes, 1.0f);
    }
}

/// From the elements in the order of `places` to the blocks.
void joinToBlocks(const RowGroup& group, const float* factors) {
    const RowMemory& memory = group.memory;
    const std::ptrdiff_t n = group.halfWidth;
    const auto join = [&](std::ptrdiff_t k, float* low, float* high) HWY_ATTR {
        joinPair({group.element(k), group.element(n - k)}, {low, high}, factors[2 * k],
                 factors[2 * k + 1]);
    };
    if (group.width == 1) {
        storeBlockTile(group, memory.elements, 0);
        return;
    }
    joinEnds(memory.elements, memory.low);
    if (group.blocks == 1) {
        for (std::ptrdiff_t k = 1; k <= n / 2; ++k) {
            join(k, memory.low + k * kElementFloats, memory.low + (n - k) * kElementFloats);
        }
        storeBlockTile(group, memory.low, 0);
        return;
    }
    for (std::ptrdiff_t block = 0; block < group.blocks / 2; ++block) {
        for (std::ptrdiff_t i = 1; i <= kTileSide; ++i) {
            join(block * kTileSide + i, memory.low + i * kElementFloats,
                 memory.high + (kTileSide - i) * kElementFloats);
        }
        storeBlockTile(group, memory.low, block);
        storeBlockTile(group, memory.high, group.blocks - 1 - block);
        std::copy_n(memory.low + kTileSide * kElementFloats, kElementFloats, memory.low);
    }
}

/// From the blocks to the elements, in the order of frequencies.
void splitFromBlocks(const RowGroup& group, const float* factors) {
    const RowMemory& memory = group.memory;
    const std::ptrdiff_t n = group.halfWidth;
    const auto split = [&](std::ptrdiff_t k, float* low, float* high) HWY_ATTR {
        joinPair({low, high},
                 {memory.elements + k * kElementFloats, memory.elements + (n - k) * kElementFloats},
                 factors[2 * k], -factors[2 * k + 1]);
    };
    if (group.width == 1) {
        loadBlockTile(group, 0, memory.elements);
        return;
    }
    for (std::ptrdiff_t block = 0; block < std::max<std::ptrdiff_t>(group.blocks / 2, 1); ++block) {
        loadBlockTile(group, block, memory.low);
        if (block == 0) {
            splitEnds(memory.low, memory.elements);
        }
        if (group.blocks == 1) {
            for (std::ptrdiff_t k = 1; k <= n / 2; ++k) {
                split(k, memory.low + k * kElementFloats, memory.low + (n - k) * kElementFloats);
            }
            return;
        }
        // The partner of the tile's first frequency is the first one of the previous high tile.
        std::copy_n(memory.high, kElementFloats, memory.high + kTileSide * kElementFloats);
        loadBlockTile(group, group.blocks - 1 - block, memory.high);
        for (std::ptrdiff_t i = block == 0 ? 1 : 0; i < kTileSide; ++i) {
            split(block * kTileSide + i, memory.low + i * kElementFloats,
                  memory.high + (kTileSide - i) * kElementFloats);
        }
    }
    split(n / 2, memory.high, memory.high);
}

} // namespace

void forwardRowGroupLanes(const RealFft2D& fft, const RealFft2D::Tables& tables,
                          const char* firstRow, std::ptrdiff_t stepBytes, int groupIndex,
                          float* spectrum, float* scratch) {
    const RowGroup group(fft, tables, groupIndex, spectrum, scratch);
    for (std::ptrdiff_t left = 0; left < group.width; left += kTileSide) {
        loadImageTile(group, firstRow, stepBytes, left);
    }
    decimate(tables.rows, 0, group.halfWidth, group.memory.elements, kForwardParts);
    joinToBlocks(group, tables.joinFactors.data());
}

void inverseRowGroupLanes(const RealFft2D& fft, const RealFft2D::Tables& tables,
                          const float* spectrum, int groupIndex, char* firstRow,
                          std::ptrdiff_t stepBytes, float* scratch) {
    const RowGroup group(fft, tables, groupIndex, const_cast<float*>(spectrum), scratch);
    splitFromBlocks(group, tables.joinFactors.data());
    decimate(tables.rows, 0, group.halfWidth, group.memory.elements, kInverseParts);
    for (std::ptrdiff_t left = 0; left < group.width; left += kTileSide) {
        storeImageTile(group, firstRow, stepBytes, left, tables.inverseFactor);
    }
}

void forwardColumnLanes(const LaneFftPlan& plan, float* block) {
    decimate(plan, 0, static_cast<std::ptrdiff_t>(plan.length), block, kForwardParts);
}

void inverseColumnLanes(const LaneFftPlan& plan, float* block) {
    assemble(plan, 0, static_cast<std::ptrdiff_t>(plan.length), block, kInverseParts);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(forwardRowGroupLanes);
HWY_EXPORT(inverseRowGroupLanes);
HWY_EXPORT(forwardColumnLanes);
HWY_EXPORT(inverseColumnLanes);

namespace {

constexpr std::size_t kRow = RealFft2D::kRowFloats;
constexpr std::size_t kImaginary = RealFft2D::kLanes;

template <class Visit>
void forEachRowPair(const RealFft2D& fft, float* block, Visit visit) {
    const int h = fft.height();
    for (int v = 1; v < (h + 1) / 2; ++v) {
        visit(block + fft.rowOf(v) * kRow, block + fft.rowOf(h - v) * kRow);
    }
}

/// Column 0 holds the transform of two real columns, one in the real and one in the imaginary
/// parts. Separates their spectra.
void untangleFirstColumn(const RealFft2D& fft, float* block) {
    forEachRowPair(fft, block, [](float* low, float* high) {
        const float lowRe = low[0];
        const float lowIm = low[kImaginary];
        const float highRe = high[0];
        const float highIm = high[kImaginary];
        low[0] = 0.5f * (lowRe + highRe);
        low[kImaginary] = 0.5f * (lowIm - highIm);
        high[0] = 0.5f * (lowIm + highIm);
        high[kImaginary] = 0.5f * (highRe - lowRe);
    });
}

void tangleFirstColumn(const RealFft2D& fft, float* block) {
    forEachRowPair(fft, block, [](float* low, float* high) {
        const float firstRe = low[0];
        const float firstIm = low[kImaginary];
        const float secondRe = high[0];
        const float secondIm = high[kImaginary];
        low[0] = firstRe - secondIm;
        low[kImaginary] = firstIm + secondRe;
        high[0] = firstRe + secondIm;
        high[kImaginary] = secondRe - firstIm;
    });
}

/// A limit above the address space of every supported processor. A larger spectrum is refused
/// before its tables are computed.
constexpr std::uint64_t kMaxSpectrumBytes = std::uint64_t{1} << 46;

std::size_t floatCount(std::uint64_t count) {
    const std::uint64_t limit =
        std::min<std::uint64_t>(kMaxSpectrumBytes, std::numeric_limits<std::ptrdiff_t>::max());
    if (count > limit / sizeof(float)) {
        throw std::bad_alloc();
    }
    return static_cast<std::size_t>(count);
}

/// The elements of a group of rows, and two tiles with the first element of the next tile each.
std::size_t rowScratchFloats(int orderX) {
    constexpr std::uint64_t kTileElements = 2 * (RealFft2D::kLanes + 1);
    return floatCount(kRow * ((std::uint64_t{1} << std::max(orderX - 1, 0)) + kTileElements));
}

int piecesOf(int count) {
    return std::max(count / RealFft2D::kLanes, 1);
}

} // namespace

RealFft2D::Tables::Tables(int orderX, int orderY)
    : rows(std::max(orderX - 1, 0)), columns(orderY), columnFrequencies(columns.length),
      inverseFactor(1.0f / (static_cast<float>(rows.length) * static_cast<float>(columns.length))) {
    const RootsOfUnity roots(orderX);
    const std::size_t count = rows.length / 2 + 1;
    joinFactors.reserve(2 * count);
    for (std::size_t k = 0; k < count; ++k) {
        const auto root = roots(k);
        joinFactors.push_back(static_cast<float>(0.5 * root.im));
        joinFactors.push_back(static_cast<float>(-0.5 * root.re));
    }
    for (std::size_t v = 0; v < columns.length; ++v) {
        columnFrequencies[columns.places[v]] = static_cast<std::uint32_t>(v);
    }
}

RealFft2D::RealFft2D(int orderX, int orderY)
    : m_width(1 << orderX), m_height(1 << orderY), m_blockCount(piecesOf(m_width / 2)),
      m_groupCount(piecesOf(m_height)), m_blockFloats(floatCount(std::uint64_t{kRow} << orderY)),
      m_spectrumFloats(
          floatCount(std::uint64_t{m_blockFloats} * static_cast<std::uint64_t>(m_blockCount))),
      m_scratchFloats(rowScratchFloats(orderX)), m_tables(orderX, orderY) {}

void RealFft2D::forwardRows(const float* image, std::ptrdiff_t imageStepBytes, int group,
                            float* spectrum, float* scratch) const {
    const char* firstRow = bytesAway(reinterpret_cast<const char*>(image),
                                     std::int64_t{imageStepBytes} * group * kLanes);
    HWY_DYNAMIC_DISPATCH(forwardRowGroupLanes)
    (*this, m_tables, firstRow, imageStepBytes, group, spectrum, scratch);
}

void RealFft2D::forwardRowGroup(const float* firstRow, std::ptrdiff_t stepBytes, int group,
                                float* spectrum, float* scratch) const {
    HWY_DYNAMIC_DISPATCH(forwardRowGroupLanes)
    (*this, m_tables, reinterpret_cast<const char*>(firstRow), stepBytes, group, spectrum, scratch);
}

void RealFft2D::inverseRows(const float* spectrum, int group, float* image,
                            std::ptrdiff_t imageStepBytes, float* scratch) const {
    char* firstRow =
        bytesAway(reinterpret_cast<char*>(image), std::int64_t{imageStepBytes} * group * kLanes);
    HWY_DYNAMIC_DISPATCH(inverseRowGroupLanes)
    (*this, m_tables, spectrum, group, firstRow, imageStepBytes, scratch);
}

void RealFft2D::forwardColumns(float* block, int blockIndex) const {
    HWY_DYNAMIC_DISPATCH(forwardColumnLanes)(m_tables.columns, block);
    if (blockIndex == 0) {
        untangleFirstColumn(*this, block);
    }
}

void RealFft2D::inverseColumns(float* block, int blockIndex) const {
    if (blockIndex == 0) {
        tangleFirstColumn(*this, block);
    }
    HWY_DYNAMIC_DISPATCH(inverseColumnLanes)(m_tables.columns, block);
}

} // namespace vel
#endif
