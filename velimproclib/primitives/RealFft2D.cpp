#include "velimproclib/primitives/RealFft2D.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/RealFft2D.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/LaneFft-inl.h"
#include "velimproclib/primitives/TransposeTile-inl.h"

// Rows: a group of 16 rows is transposed tile by tile, so that its 16 rows become the lanes of one
// transform. The real row of w samples is read as w/2 complex ones (even samples real, odd samples
// imaginary), which is what the transposed tiles are already. After the complex transform of half
// the length, frequencies k and w/2 - k are joined to the spectrum of the real row, and the tiles
// are transposed back into the column blocks.
//
// Columns: the 16 columns of a block are the lanes.

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

constexpr std::ptrdiff_t kFloatBytes = sizeof(float);
constexpr std::ptrdiff_t kLaneBytes = kFftLanes * kFloatBytes;
constexpr std::ptrdiff_t kElementBytes = kElementFloats * kFloatBytes;

struct Unchanged {
    HWY_INLINE TileVec operator()(TileVec v) const { return v; }
};

struct Scaled {
    TileVec factor;
    HWY_INLINE TileVec operator()(TileVec v) const { return hn::Mul(v, factor); }
};

/// The plain path for images smaller than a tile.
struct SmallTile {
    int rows;
    int columns;
};

/// to(c, r) = from(r, c) times `factor` for a tile that is smaller than 16 by 16.
void transposeSmallTile(SmallTile tile, const char* from, std::ptrdiff_t fromStepBytes, char* to,
                        std::ptrdiff_t toStepBytes, float factor) {
    for (int r = 0; r < tile.rows; ++r) {
        for (int c = 0; c < tile.columns; ++c) {
            float value;
            std::memcpy(&value, from + r * fromStepBytes + c * kFloatBytes, sizeof value);
            value *= factor;
            std::memcpy(to + c * toStepBytes + r * kFloatBytes, &value, sizeof value);
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
inline void joinEnds(float* element) {
    forEachLane([&](std::ptrdiff_t lane) HWY_ATTR {
        const Complex z = loadElement(element + lane);
        storeElement({hn::Add(z.re, z.im), hn::Sub(z.re, z.im)}, element + lane);
    });
}

inline void splitEnds(float* element) {
    forEachLane([&](std::ptrdiff_t lane) HWY_ATTR {
        const LaneVec half = hn::Set(LaneTag(), 0.5f);
        const Complex x = loadElement(element + lane);
        storeElement({hn::Mul(hn::Add(x.re, x.im), half), hn::Mul(hn::Sub(x.re, x.im), half)},
                     element + lane);
    });
}

/// Frequencies k and w/2 - k of the real rows from those of the transform of half length
/// (`low` and `high`), or the reverse, for which `factor` comes conjugated.
HWY_INLINE void joinPair(float* low, float* high, float factorRe, float factorIm) {
    forEachLane([&](std::ptrdiff_t lane) HWY_ATTR {
        const LaneTag d;
        const Complex a = loadElement(low + lane);
        const Complex b = loadElement(high + lane);
        const Complex sum{hn::Add(a.re, b.re), hn::Sub(a.im, b.im)};        // a + conj b
        const Complex difference{hn::Sub(a.re, b.re), hn::Add(a.im, b.im)}; // a - conj b
        const Complex even = scale(sum, hn::Set(d, 0.5f));
        const Complex odd = mul(difference, hn::Set(d, factorRe), hn::Set(d, factorIm));
        storeElement({hn::Sub(even.re, odd.re), hn::Sub(odd.im, even.im)}, high + lane);
        storeElement(add(even, odd), low + lane);
    });
}

template <bool kForward>
void joinPairs(const RealFft2D::Tables& tables, float* elements) {
    const auto count = static_cast<std::ptrdiff_t>(tables.rows.length);
    if constexpr (kForward) {
        joinEnds(elements);
    } else {
        splitEnds(elements);
    }
    for (std::ptrdiff_t k = 1; k <= count / 2; ++k) {
        const float* factor = tables.joinFactors.data() + 2 * k;
        joinPair(elements + k * kElementFloats, elements + (count - k) * kElementFloats, factor[0],
                 kForward ? factor[1] : -factor[1]);
    }
}

inline char* bytes(float* p) {
    return reinterpret_cast<char*>(p);
}
inline const char* bytes(const float* p) {
    return reinterpret_cast<const char*>(p);
}

} // namespace

void forwardRowGroupLanes(const RealFft2D& fft, const RealFft2D::Tables& tables,
                          const float* firstRow, std::ptrdiff_t stepBytes, int group,
                          float* spectrum, float* scratch) {
    const int rows = std::min(fft.height(), RealFft2D::kLanes);
    const auto halfWidth = static_cast<std::ptrdiff_t>(tables.rows.length);
    float* elements = scratch;
    float* work = scratch + halfWidth * kElementFloats;
    float* blockRows = spectrum + group * kFftLanes * kElementFloats;

    if (rows < kTileSide || fft.width() < 2 * kTileSide) {
        const int columns = std::min(fft.width(), 2 * kTileSide);
        std::fill_n(elements, halfWidth * kElementFloats, 0.0f);
        for (std::ptrdiff_t left = 0; left < fft.width(); left += columns) {
            transposeSmallTile({rows, columns}, bytes(firstRow + left), stepBytes,
                               bytes(elements + left * kFftLanes), kLaneBytes, 1.0f);
        }
    } else {
        for (std::ptrdiff_t left = 0; left < fft.width(); left += kTileSide) {
            transposeTile(bytes(firstRow + left), stepBytes, bytes(elements + left * kFftLanes),
                          kLaneBytes, Unchanged());
        }
    }

    if (fft.width() > 1) {
        transformLanes(tables.rows, elements, work, kForwardParts);
        joinPairs<true>(tables, elements);
    }

    const auto blockFloats = static_cast<std::ptrdiff_t>(fft.blockFloats());
    for (int block = 0; block < fft.blockCount(); ++block) {
        const float* from = elements + block * kFftLanes * kElementFloats;
        float* to = blockRows + block * blockFloats;
        if (rows < kTileSide || halfWidth < kTileSide) {
            const int columns = static_cast<int>(std::min<std::ptrdiff_t>(halfWidth, kTileSide));
            std::fill_n(to, rows * kElementFloats, 0.0f);
            transposeSmallTile({columns, rows}, bytes(from), kElementBytes, bytes(to),
                               kElementBytes, 1.0f);
            transposeSmallTile({columns, rows}, bytes(from + kFftLanes), kElementBytes,
                               bytes(to + kFftLanes), kElementBytes, 1.0f);
        } else {
            transposeTile(bytes(from), kElementBytes, bytes(to), kElementBytes, Unchanged());
            transposeTile(bytes(from + kFftLanes), kElementBytes, bytes(to + kFftLanes),
                          kElementBytes, Unchanged());
        }
    }
}

void inverseRowGroupLanes(const RealFft2D& fft, const RealFft2D::Tables& tables,
                          const float* spectrum, int group, float* firstRow,
                          std::ptrdiff_t stepBytes, float* scratch) {
    const int rows = std::min(fft.height(), RealFft2D::kLanes);
    const auto halfWidth = static_cast<std::ptrdiff_t>(tables.rows.length);
    float* elements = scratch;
    float* work = scratch + halfWidth * kElementFloats;
    const float* blockRows = spectrum + group * kFftLanes * kElementFloats;

    const auto blockFloats = static_cast<std::ptrdiff_t>(fft.blockFloats());
    for (int block = 0; block < fft.blockCount(); ++block) {
        const float* from = blockRows + block * blockFloats;
        float* to = elements + block * kFftLanes * kElementFloats;
        if (rows < kTileSide || halfWidth < kTileSide) {
            const int columns = static_cast<int>(std::min<std::ptrdiff_t>(halfWidth, kTileSide));
            std::fill_n(to, columns * kElementFloats, 0.0f);
            transposeSmallTile({rows, columns}, bytes(from), kElementBytes, bytes(to),
                               kElementBytes, 1.0f);
            transposeSmallTile({rows, columns}, bytes(from + kFftLanes), kElementBytes,
                               bytes(to + kFftLanes), kElementBytes, 1.0f);
        } else {
            transposeTile(bytes(from), kElementBytes, bytes(to), kElementBytes, Unchanged());
            transposeTile(bytes(from + kFftLanes), kElementBytes, bytes(to + kFftLanes),
                          kElementBytes, Unchanged());
        }
    }

    if (fft.width() > 1) {
        joinPairs<false>(tables, elements);
        transformLanes(tables.rows, elements, work, kInverseParts);
    }

    const float factor = tables.inverseFactor;
    if (rows < kTileSide || fft.width() < 2 * kTileSide) {
        const int columns = std::min(fft.width(), 2 * kTileSide);
        for (std::ptrdiff_t left = 0; left < fft.width(); left += columns) {
            transposeSmallTile({columns, rows}, bytes(elements + left * kFftLanes), kLaneBytes,
                               bytes(firstRow + left), stepBytes, factor);
        }
    } else {
        const Scaled scaled{hn::Set(TileTag(), factor)};
        for (std::ptrdiff_t left = 0; left < fft.width(); left += kTileSide) {
            transposeTile(bytes(elements + left * kFftLanes), kLaneBytes, bytes(firstRow + left),
                          stepBytes, scaled);
        }
    }
}

void forwardColumnLanes(const LaneFftPlan& plan, float* block, float* scratch) {
    transformLanes(plan, block, scratch, kForwardParts);
}

void inverseColumnLanes(const LaneFftPlan& plan, float* block, float* scratch) {
    transformLanes(plan, block, scratch, kInverseParts);
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

/// Column 0 holds the transform of two real columns, one in the real and one in the imaginary
/// parts: takes their spectra apart.
void untangleFirstColumn(float* block, std::size_t height) {
    for (std::size_t v = 1; v < (height + 1) / 2; ++v) {
        float* low = block + v * kRow;
        float* high = block + (height - v) * kRow;
        const float lowRe = low[0];
        const float lowIm = low[kImaginary];
        const float highRe = high[0];
        const float highIm = high[kImaginary];
        low[0] = 0.5f * (lowRe + highRe);
        low[kImaginary] = 0.5f * (lowIm - highIm);
        high[0] = 0.5f * (lowIm + highIm);
        high[kImaginary] = 0.5f * (highRe - lowRe);
    }
}

void tangleFirstColumn(float* block, std::size_t height) {
    for (std::size_t v = 1; v < (height + 1) / 2; ++v) {
        float* low = block + v * kRow;
        float* high = block + (height - v) * kRow;
        const float firstRe = low[0];
        const float firstIm = low[kImaginary];
        const float secondRe = high[0];
        const float secondIm = high[kImaginary];
        low[0] = firstRe - secondIm;
        low[kImaginary] = firstIm + secondRe;
        high[0] = firstRe + secondIm;
        high[kImaginary] = secondRe - firstIm;
    }
}

/// No processor that this is built for has a larger address space for one program; a larger
/// spectrum is refused before time goes into its tables.
constexpr std::uint64_t kMaxSpectrumBytes = std::uint64_t{1} << 46;

std::size_t floatCount(std::uint64_t count) {
    const std::uint64_t limit =
        std::min<std::uint64_t>(kMaxSpectrumBytes, std::numeric_limits<std::ptrdiff_t>::max());
    if (count > limit / sizeof(float)) {
        throw std::bad_alloc();
    }
    return static_cast<std::size_t>(count);
}

int piecesOf(int count) {
    return std::max(count / RealFft2D::kLanes, 1);
}

} // namespace

RealFft2D::Tables::Tables(int orderX, int orderY)
    : rows(std::max(orderX - 1, 0)), columns(orderY),
      inverseFactor(1.0f / (static_cast<float>(rows.length) * static_cast<float>(columns.length))) {
    const RootsOfUnity roots(orderX);
    const std::size_t count = rows.length / 2 + 1;
    joinFactors.reserve(2 * count);
    for (std::size_t k = 0; k < count; ++k) {
        const auto root = roots(k);
        joinFactors.push_back(static_cast<float>(0.5 * root.im));
        joinFactors.push_back(static_cast<float>(-0.5 * root.re));
    }
}

RealFft2D::RealFft2D(int orderX, int orderY)
    : m_width(1 << orderX), m_height(1 << orderY), m_blockCount(piecesOf(m_width / 2)),
      m_groupCount(piecesOf(m_height)), m_blockFloats(floatCount(std::uint64_t{kRow} << orderY)),
      m_spectrumFloats(
          floatCount(std::uint64_t{m_blockFloats} * static_cast<std::uint64_t>(m_blockCount))),
      m_scratchFloats(floatCount(std::uint64_t{kRow} << std::max(orderX, orderY))),
      m_tables(orderX, orderY) {}

void RealFft2D::forwardRowGroup(const float* firstRow, std::ptrdiff_t stepBytes, int group,
                                float* spectrum, float* scratch) const {
    HWY_DYNAMIC_DISPATCH(forwardRowGroupLanes)
    (*this, m_tables, firstRow, stepBytes, group, spectrum, scratch);
}

void RealFft2D::inverseRowGroup(const float* spectrum, int group, float* firstRow,
                                std::ptrdiff_t stepBytes, float* scratch) const {
    HWY_DYNAMIC_DISPATCH(inverseRowGroupLanes)
    (*this, m_tables, spectrum, group, firstRow, stepBytes, scratch);
}

void RealFft2D::forwardColumns(float* block, int blockIndex, float* scratch) const {
    HWY_DYNAMIC_DISPATCH(forwardColumnLanes)(m_tables.columns, block, scratch);
    if (blockIndex == 0) {
        untangleFirstColumn(block, static_cast<std::size_t>(m_height));
    }
}

void RealFft2D::inverseColumns(float* block, int blockIndex, float* scratch) const {
    if (blockIndex == 0) {
        tangleFirstColumn(block, static_cast<std::size_t>(m_height));
    }
    HWY_DYNAMIC_DISPATCH(inverseColumnLanes)(m_tables.columns, block, scratch);
}

} // namespace vel
#endif
