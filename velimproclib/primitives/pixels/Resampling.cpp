#include "velimproclib/primitives/pixels/Resampling.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/pixels/Resampling.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef VELORN_PRIMITIVES_RESAMPLING_COMMON
#define VELORN_PRIMITIVES_RESAMPLING_COMMON

namespace vel {
namespace {

constexpr int kWeightBits = 14;
constexpr std::int32_t kWeightOne = 1 << kWeightBits;
// Fractional bits of a pixel between the two passes. With a weight, the product has 29 bits.
constexpr int kPassBits = 7;

// A position between two neighbouring pixels, or on one of them when the second has no weight.
struct Sample {
    std::int32_t first;
    std::int32_t secondWeight; // less than `kWeightOne`

    std::int32_t second() const noexcept { return secondWeight == 0 ? first : first + 1; }
};

// One direction of the resampling: `length` source pixels, enlarged by `factor`.
struct Axis {
    std::int32_t length;
    double factor;

    Sample at(std::int32_t i) const noexcept {
        const double position = (i + 0.5) / factor - 0.5;
        if (!(position > 0.0)) {
            return {0, 0};
        }
        if (position >= length - 1) {
            return {length - 1, 0};
        }
        const auto first = static_cast<std::int32_t>(position);
        const auto weight = static_cast<std::int32_t>((position - first) * kWeightOne + 0.5);
        return weight == kWeightOne ? Sample{first + 1, 0} : Sample{first, weight};
    }
};

struct Plane {
    const std::uint8_t* src;
    std::int32_t srcStep;
    Axis columns;
    Axis rows;
};

} // namespace
} // namespace vel

#endif

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

// Each row of the result is blended from two source rows. These are first resampled along the row
// and kept while rows of the result need them. All arithmetic is on vectors of 16-bit elements,
// which hold a pixel with a fraction of `kPassBits`.
//
// Columns are resampled in blocks: the positions of a block, computed once for all rows, and the
// two current source rows are arrays of a fixed size on the stack.
constexpr std::int32_t kBlock = 1024;

// Neighbouring columns of the result, one for each lane of a vector. Where a window of the source
// row holds the pixels of all of them, one load and one table lookup give every column its pair.
// Otherwise, for distant columns and in very short rows, the pixels are fetched one by one.
constexpr std::int32_t kLanes = 8;
constexpr std::int32_t kWindow = 16;
constexpr std::int32_t kNoWindow = -1;

struct alignas(kWindow) ColumnGroup {
    std::uint8_t pairs[2 * kLanes]; // the places of first and second pixel in the window
    std::int16_t weights[kLanes];   // of the second pixels, doubled: fractions of 15 bits
    std::int32_t firsts[kLanes];
    std::int32_t seconds[kLanes];
    std::int32_t window;
};

ColumnGroup locateGroup(const Axis& columns, std::int32_t x0, std::int32_t last) {
    ColumnGroup group;
    for (std::int32_t lane = 0; lane < kLanes; ++lane) {
        // Lanes beyond the end of the block repeat its last column.
        const Sample sample = columns.at(x0 + std::min(lane, last - x0));
        group.firsts[lane] = sample.first;
        group.seconds[lane] = sample.second();
        group.weights[lane] = static_cast<std::int16_t>(2 * sample.secondWeight);
    }
    const std::int32_t window = std::min(group.firsts[0], columns.length - kWindow);
    if (window < 0 || group.seconds[kLanes - 1] - window >= kWindow) {
        group.window = kNoWindow;
        return group;
    }
    group.window = window;
    for (std::int32_t lane = 0; lane < kLanes; ++lane) {
        group.pairs[2 * lane] = static_cast<std::uint8_t>(group.firsts[lane] - window);
        group.pairs[2 * lane + 1] = static_cast<std::uint8_t>(group.seconds[lane] - window);
    }
    return group;
}

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
using ByteTag = hn::FixedTag<std::uint8_t, kWindow>;

HWY_INLINE hn::Vec<ByteTag> pairsOf(const std::uint8_t* HWY_RESTRICT src,
                                    const ColumnGroup& group) {
    const ByteTag bytes;
    if (group.window != kNoWindow) {
        return hn::TableLookupBytes(hn::LoadU(bytes, src + group.window),
                                    hn::Load(bytes, group.pairs));
    }
    alignas(kWindow) std::uint8_t pairs[2 * kLanes];
    for (std::int32_t lane = 0; lane < kLanes; ++lane) {
        pairs[2 * lane] = src[group.firsts[lane]];
        pairs[2 * lane + 1] = src[group.seconds[lane]];
    }
    return hn::Load(bytes, pairs);
}

// first + (second - first)*weight, rounded to `kPassBits` fractional bits. The product of 15-bit
// fractions rounds exactly as the sum of both pixels with 14-bit weights does.
HWY_INLINE void resampleGroup(const std::uint8_t* HWY_RESTRICT src, const ColumnGroup& group,
                              std::int16_t* HWY_RESTRICT row) {
    static_assert(std::endian::native == std::endian::little && kPassBits == 7);
    const hn::FixedTag<std::int16_t, kLanes> d;
    const hn::FixedTag<std::uint16_t, kLanes> pair;
    const auto pairs = hn::BitCast(pair, pairsOf(src, group));
    const auto first = hn::BitCast(d, hn::And(pairs, hn::Set(pair, 0xFF)));
    const auto second = hn::BitCast(d, hn::ShiftRight<8>(pairs));
    const auto difference = hn::ShiftLeft<kPassBits>(hn::Sub(second, first));
    const auto part = hn::MulFixedPoint15(difference, hn::Load(d, group.weights));
    hn::Store(hn::Add(hn::ShiftLeft<kPassBits>(first), part), d, row);
}
#else
void resampleGroup(const std::uint8_t* src, const ColumnGroup& group, std::int16_t* row) {
    constexpr int kShift = kWeightBits - kPassBits;
    for (std::int32_t lane = 0; lane < kLanes; ++lane) {
        const std::int32_t first = src[group.firsts[lane]];
        const std::int32_t difference = src[group.seconds[lane]] - first;
        const std::int32_t sum = first * kWeightOne + difference * (group.weights[lane] / 2);
        row[lane] = static_cast<std::int16_t>((sum + (1 << (kShift - 1))) >> kShift);
    }
}
#endif

void resampleRow(const std::uint8_t* HWY_RESTRICT src, const ColumnGroup* HWY_RESTRICT groups,
                 std::int32_t groupCount, std::int16_t* HWY_RESTRICT row) {
    for (const ColumnGroup* group = groups; group != groups + groupCount; ++group) {
        resampleGroup(src, *group, row);
        row += kLanes;
    }
}

// first + (second - first)*weight, rounded to the pixel. The product has 30 bits. Its lowest 14
// bits do not affect the result; the others are combined from both halves of the product, and
// everything else is 16-bit arithmetic.
template <class D>
HWY_INLINE void blendPixels(D d, const std::int16_t* first, const std::int16_t* second,
                            std::int16_t weight, std::uint8_t* dst) {
    const hn::RebindToUnsigned<D> bits;
    const hn::Rebind<std::uint8_t, D> bytes;
    const auto from = hn::LoadU(d, first);
    const auto difference = hn::Sub(hn::LoadU(d, second), from);
    const auto weights = hn::Set(d, weight);
    const auto high = hn::ShiftLeft<16 - kWeightBits>(hn::MulHigh(difference, weights));
    const auto low = hn::ShiftRight<kWeightBits>(hn::BitCast(bits, hn::Mul(difference, weights)));
    const auto sum = hn::Add(from, hn::Add(high, hn::BitCast(d, low)));
    const auto rounded = hn::Add(sum, hn::Set(d, 1 << (kPassBits - 1)));
    hn::StoreU(hn::DemoteTo(bytes, hn::ShiftRight<kPassBits>(rounded)), bytes, dst);
}

void blendRows(const std::int16_t* HWY_RESTRICT first, const std::int16_t* HWY_RESTRICT second,
               std::int32_t secondWeight, std::uint8_t* HWY_RESTRICT dst, std::int32_t count) {
    const hn::ScalableTag<std::int16_t> d;
    const hn::CappedTag<std::int16_t, 1> one;
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
    const auto weight = static_cast<std::int16_t>(secondWeight);
    std::int32_t x = 0;
    for (; x + lanes <= count; x += lanes) {
        blendPixels(d, first + x, second + x, weight, dst + x);
    }
    for (; x < count; ++x) {
        blendPixels(one, first + x, second + x, weight, dst + x);
    }
}

// Source rows of one block of columns, resampled on demand. Output rows are made from top to
// bottom, and the second source row of one is often the first source row of the next.
class ResampledRows {
public:
    ResampledRows(const Plane& plane, std::int32_t x0, std::int32_t count)
        : m_plane(plane), m_groupCount((count + kLanes - 1) / kLanes) {
        for (std::int32_t g = 0; g < m_groupCount; ++g) {
            m_groups[g] = locateGroup(plane.columns, x0 + g * kLanes, x0 + count - 1);
        }
    }

    void request(const Sample& sample) {
        if (m_index[0] != sample.first) {
            std::swap(m_rows[0], m_rows[1]);
            std::swap(m_index[0], m_index[1]);
        }
        provide(0, sample.first);
        m_second = sample.second() == sample.first ? 0 : 1;
        provide(m_second, sample.second());
    }
    // The rows of the last requested sample.
    const std::int16_t* first() const { return m_rows[0]; }
    const std::int16_t* second() const { return m_rows[m_second]; }

private:
    void provide(int slot, std::int32_t y) {
        if (m_index[slot] == y) {
            return;
        }
        resampleRow(rowAt(m_plane.src, m_plane.srcStep, static_cast<std::size_t>(y)), m_groups,
                    m_groupCount, m_rows[slot]);
        m_index[slot] = y;
    }

    const Plane& m_plane;
    std::int32_t m_groupCount;
    ColumnGroup m_groups[kBlock / kLanes];
    alignas(kWindow) std::int16_t m_buffers[2][kBlock];
    std::int16_t* m_rows[2] = {m_buffers[0], m_buffers[1]};
    std::int32_t m_index[2] = {-1, -1};
    int m_second = 0;
};

// At half the size, every pixel is the rounded mean of four source pixels of its own: the weights
// and both roundings give the same value.
bool isHalved(const Plane& plane, std::int32_t w, std::int32_t h) {
    return plane.columns.factor == 0.5 && plane.rows.factor == 0.5 &&
           w <= plane.columns.length / 2 && h <= plane.rows.length / 2;
}

void halveRows(const std::uint8_t* HWY_RESTRICT upper, const std::uint8_t* HWY_RESTRICT lower,
               std::uint8_t* HWY_RESTRICT dst, std::int32_t count) {
    for (std::int32_t x = 0; x < count; ++x) {
        const int sum = upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1];
        dst[x] = static_cast<std::uint8_t>((sum + 2) >> 2);
    }
}

void halve(const Plane& plane, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
           std::int32_t h) {
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        halveRows(rowAt(plane.src, plane.srcStep, 2 * y),
                  rowAt(plane.src, plane.srcStep, 2 * y + 1), rowAt(dst, dstStep, y), w);
    }
}

} // namespace

void resampleU8(const Plane& plane, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
                std::int32_t h) {
    if (isHalved(plane, w, h)) {
        halve(plane, dst, dstStep, w, h);
        return;
    }
    std::int32_t count;
    for (std::int32_t x0 = 0; x0 < w; x0 += count) {
        count = std::min(kBlock, w - x0);
        ResampledRows rows(plane, x0, count);
        for (std::int32_t y = 0; y < h; ++y) {
            const Sample sample = plane.rows.at(y);
            rows.request(sample);
            blendRows(rows.first(), rows.second(), sample.secondWeight,
                      rowAt(dst, dstStep, static_cast<std::size_t>(y)) + x0, count);
        }
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(resampleU8);

std::int32_t resampledLength(std::int32_t srcLength, double factor, std::int32_t limit) noexcept {
    // A product that is below a whole number only by the rounding of the factor counts as whole.
    const double length = std::floor(srcLength * factor + 0.0000001);
    return length < limit ? static_cast<std::int32_t>(length) : limit;
}

PixelRect cutToImage(const PixelRect& rect, std::int32_t w, std::int32_t h) noexcept {
    const std::int64_t left = std::max<std::int64_t>(rect.x, 0);
    const std::int64_t top = std::max<std::int64_t>(rect.y, 0);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t{rect.x} + rect.w, w);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t{rect.y} + rect.h, h);
    return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
            static_cast<std::int32_t>(std::max<std::int64_t>(right - left, 0)),
            static_cast<std::int32_t>(std::max<std::int64_t>(bottom - top, 0))};
}

} // namespace

Status resizeU8(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH, std::int32_t srcStep,
                const PixelRect& srcRect, std::uint8_t* dst, std::int32_t dstStep,
                std::int32_t dstW, std::int32_t dstH, double xFactor, double yFactor,
                std::int32_t interpolation) noexcept {
    if (src == nullptr || dst == nullptr) {
        return kNullPointer;
    }
    const PixelRect rect = cutToImage(srcRect, srcW, srcH);
    if (!(xFactor > 0.0) || !(yFactor > 0.0)) {
        return kBadSize;
    }
    if (const Status status =
            checkArguments({}, {srcW, srcH, srcRect.w, srcRect.h, rect.w, rect.h, dstW, dstH},
                           {srcStep, dstStep})) {
        return status;
    }
    if (interpolation != kLinear) {
        return kBadMask;
    }
    const Plane plane{rowAt(src, srcStep, static_cast<std::size_t>(rect.y)) + rect.x,
                      srcStep,
                      {rect.w, xFactor},
                      {rect.h, yFactor}};
    HWY_DYNAMIC_DISPATCH(resampleU8)
    (plane, dst, dstStep, resampledLength(srcW, xFactor, dstW),
     resampledLength(srcH, yFactor, dstH));
    return kOk;
}

} // namespace vel
#endif
