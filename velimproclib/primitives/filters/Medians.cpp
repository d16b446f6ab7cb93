#include "velimproclib/primitives/filters/Medians.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/filters/neighbourhoods.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/filters/Medians.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

using Pixel = std::uint8_t;

inline Pixel smaller(Pixel a, Pixel b) {
    return b < a ? b : a;
}

inline Pixel larger(Pixel a, Pixel b) {
    return b > a ? b : a;
}

inline Pixel medianOf3(Pixel a, Pixel b, Pixel c) {
    return larger(smaller(a, b), smaller(larger(a, b), c));
}

// Neither the smallest nor the largest of four of the five values can be the median. Therefore it
// is the median of the two remaining candidates and the fifth value.
inline Pixel medianOf5(Pixel a, Pixel b, Pixel c, Pixel d, Pixel e) {
    const Pixel low = larger(smaller(a, b), smaller(c, d));
    const Pixel high = smaller(larger(a, b), larger(c, d));
    return medianOf3(low, high, e);
}

struct Sorted {
    Pixel low;
    Pixel middle;
    Pixel high;
};

inline Sorted sorted(Pixel a, Pixel b, Pixel c) {
    const Pixel low = smaller(a, b);
    const Pixel high = larger(a, b);
    return {smaller(low, c), larger(low, smaller(high, c)), larger(high, c)};
}

// Takes three sorted triples. The median of all nine values is the median of the largest low, the
// median of the middles and the smallest high.
inline Pixel medianOf9(Sorted a, Sorted b, Sorted c) {
    return medianOf3(larger(larger(a.low, b.low), c.low), medianOf3(a.middle, b.middle, c.middle),
                     smaller(smaller(a.high, b.high), c.high));
}

// `apart` is the distance between neighbours: 1 along a row, the step down a column.
void medianRowOf3(const Pixel* src, std::int64_t apart, Pixel* HWY_RESTRICT dst, std::ptrdiff_t w) {
    const Pixel* before = bytesAway(src, -apart);
    const Pixel* after = bytesAway(src, apart);
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        dst[x] = medianOf3(before[x], src[x], after[x]);
    }
}

void medianRowOf5(const Pixel* src, std::int64_t apart, Pixel* HWY_RESTRICT dst, std::ptrdiff_t w) {
    const Pixel* twoBefore = bytesAway(src, -2 * apart);
    const Pixel* before = bytesAway(src, -apart);
    const Pixel* after = bytesAway(src, apart);
    const Pixel* twoAfter = bytesAway(src, 2 * apart);
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        dst[x] = medianOf5(twoBefore[x], before[x], src[x], after[x], twoAfter[x]);
    }
}

void medianRowOfSmallCross(const Pixel* src, std::int64_t step, Pixel* HWY_RESTRICT dst,
                           std::ptrdiff_t w) {
    const Pixel* above = bytesAway(src, -step);
    const Pixel* below = bytesAway(src, step);
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        dst[x] = medianOf5(above[x], src[x - 1], src[x], src[x + 1], below[x]);
    }
}

void medianRowOfLargeCross(const Pixel* src, std::int64_t step, Pixel* HWY_RESTRICT dst,
                           std::ptrdiff_t w) {
    const Pixel* twoAbove = bytesAway(src, -2 * step);
    const Pixel* above = bytesAway(src, -step);
    const Pixel* below = bytesAway(src, step);
    const Pixel* twoBelow = bytesAway(src, 2 * step);
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        const Sorted row = sorted(src[x - 1], src[x], src[x + 1]);
        const Sorted column = sorted(above[x], below[x], twoBelow[x]);
        const Sorted tips = sorted(src[x - 2], src[x + 2], twoAbove[x]);
        dst[x] = medianOf9(row, column, tips);
    }
}

template <class MedianRow>
void medianRows(const Pixel* src, std::int32_t srcStep, Pixel* dst, std::int32_t dstStep,
                std::int32_t w, std::int32_t h, std::int64_t apart, MedianRow medianRow) {
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        medianRow(rowAt(src, srcStep, y), apart, rowAt(dst, dstStep, y), w);
    }
}

} // namespace

void medianLine(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                std::int32_t dstStep, std::int32_t w, std::int32_t h, std::int64_t apart,
                std::int32_t length) {
    medianRows(src, srcStep, dst, dstStep, w, h, apart, length == 3 ? medianRowOf3 : medianRowOf5);
}

void medianCross(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                 std::int32_t dstStep, std::int32_t w, std::int32_t h, std::int32_t mask) {
    medianRows(src, srcStep, dst, dstStep, w, h, srcStep,
               mask == kMask33 ? medianRowOfSmallCross : medianRowOfLargeCross);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(medianLine);
HWY_EXPORT(medianCross);

struct Masks {
    std::int32_t small;
    std::int32_t large;
};

Status checkMask(std::int32_t mask, const Masks& known) noexcept {
    return mask == known.small || mask == known.large ? kOk : kBadMask;
}

/// For masks that read 1 (the small one) or 2 pixels on each side of a row.
Status checkWideMask(std::int32_t mask, const Masks& known, std::int32_t srcStep,
                     std::int32_t w) noexcept {
    if (const Status status = checkMask(mask, known)) {
        return status;
    }
    return checkBorderStep(srcStep, w, mask == known.small ? 2 : 4, 1);
}

} // namespace

Status medianHorizU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    if (const Status status = checkWideMask(mask, {kMask31, kMask51}, srcStep, w)) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(medianLine)
    (src, srcStep, dst, dstStep, w, h, 1, mask == kMask31 ? 3 : 5);
    return kOk;
}

Status medianVertU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                    std::int32_t dstStep, std::int32_t w, std::int32_t h,
                    std::int32_t mask) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    if (const Status status = checkRowStep(srcStep, w, 1)) {
        return status;
    }
    if (const Status status = checkMask(mask, {kMask13, kMask15})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(medianLine)
    (src, srcStep, dst, dstStep, w, h, srcStep, mask == kMask13 ? 3 : 5);
    return kOk;
}

Status medianCrossU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    if (const Status status = checkWideMask(mask, {kMask33, kMask55}, srcStep, w)) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(medianCross)(src, srcStep, dst, dstStep, w, h, mask);
    return kOk;
}

} // namespace vel
#endif
