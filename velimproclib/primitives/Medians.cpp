#include "velimproclib/primitives/Medians.h"

#include "velimproclib/primitives/neighbourhoods.h"
#include "velimproclib/primitives/rows.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/Medians.cpp"
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

// Neither the smallest nor the largest of any four of five can be the median: it is the median of
// the two middle candidates and the fifth.
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

// Of three sorted triples: the median is the one between the largest of the lows, the median of
// the middles and the smallest of the highs.
inline Pixel medianOf9(Sorted a, Sorted b, Sorted c) {
    return medianOf3(larger(larger(a.low, b.low), c.low), medianOf3(a.middle, b.middle, c.middle),
                     smaller(smaller(a.high, b.high), c.high));
}

// `apart` is the distance between neighbours: 1 along a row, the step down a column.
void medianRowOf3(const Pixel* src, std::ptrdiff_t apart, Pixel* HWY_RESTRICT dst,
                  std::ptrdiff_t w) {
    const Pixel* before = src - apart;
    const Pixel* after = src + apart;
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        dst[x] = medianOf3(before[x], src[x], after[x]);
    }
}

void medianRowOf5(const Pixel* src, std::ptrdiff_t apart, Pixel* HWY_RESTRICT dst,
                  std::ptrdiff_t w) {
    const Pixel* twoBefore = src - 2 * apart;
    const Pixel* before = src - apart;
    const Pixel* after = src + apart;
    const Pixel* twoAfter = src + 2 * apart;
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        dst[x] = medianOf5(twoBefore[x], before[x], src[x], after[x], twoAfter[x]);
    }
}

void medianRowOfSmallCross(const Pixel* src, std::ptrdiff_t step, Pixel* HWY_RESTRICT dst,
                           std::ptrdiff_t w) {
    const Pixel* above = src - step;
    const Pixel* below = src + step;
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        dst[x] = medianOf5(above[x], src[x - 1], src[x], src[x + 1], below[x]);
    }
}

void medianRowOfLargeCross(const Pixel* src, std::ptrdiff_t step, Pixel* HWY_RESTRICT dst,
                           std::ptrdiff_t w) {
    const Pixel* twoAbove = src - 2 * step;
    const Pixel* above = src - step;
    const Pixel* below = src + step;
    const Pixel* twoBelow = src + 2 * step;
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        const Sorted row = sorted(src[x - 1], src[x], src[x + 1]);
        const Sorted column = sorted(above[x], below[x], twoBelow[x]);
        const Sorted tips = sorted(src[x - 2], src[x + 2], twoAbove[x]);
        dst[x] = medianOf9(row, column, tips);
    }
}

template <class MedianRow>
void forEachRow(const Pixel* src, std::int32_t srcStep, Pixel* dst, std::int32_t dstStep,
                std::int32_t w, std::int32_t h, std::ptrdiff_t apart, MedianRow medianRow) {
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        medianRow(rowAt(src, srcStep, y), apart, rowAt(dst, dstStep, y), w);
    }
}

} // namespace

void medianLine(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                std::int32_t dstStep, std::int32_t w, std::int32_t h, std::ptrdiff_t apart,
                std::int32_t length) {
    forEachRow(src, srcStep, dst, dstStep, w, h, apart, length == 3 ? medianRowOf3 : medianRowOf5);
}

void medianCross(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                 std::int32_t dstStep, std::int32_t w, std::int32_t h, std::int32_t mask) {
    forEachRow(src, srcStep, dst, dstStep, w, h, srcStep,
               mask == kMask33 ? medianRowOfSmallCross : medianRowOfLargeCross);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(medianLine);
HWY_EXPORT(medianCross);

struct MaskWidths {
    std::int32_t smallMask;
    std::int32_t smallBorder;
    std::int32_t largeMask;
    std::int32_t largeBorder;
};

Status checkMedian(const std::uint8_t* src, std::int32_t srcStep, const std::uint8_t* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h, std::int32_t mask,
                   const MaskWidths& known) noexcept {
    const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep});
    if (status != kOk) {
        return status;
    }
    if (mask != known.smallMask && mask != known.largeMask) {
        return kBadMask;
    }
    const std::int32_t border = mask == known.smallMask ? known.smallBorder : known.largeBorder;
    return checkBorderStep(srcStep, w, border, 1);
}

} // namespace

Status medianHorizU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept {
    const Status status =
        checkMedian(src, srcStep, dst, dstStep, w, h, mask, {kMask31, 2, kMask51, 4});
    if (status != kOk) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(medianLine)
    (src, srcStep, dst, dstStep, w, h, 1, mask == kMask31 ? 3 : 5);
    return kOk;
}

Status medianVertU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                    std::int32_t dstStep, std::int32_t w, std::int32_t h,
                    std::int32_t mask) noexcept {
    const Status status =
        checkMedian(src, srcStep, dst, dstStep, w, h, mask, {kMask13, 0, kMask15, 0});
    if (status != kOk) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(medianLine)
    (src, srcStep, dst, dstStep, w, h, srcStep, mask == kMask13 ? 3 : 5);
    return kOk;
}

Status medianCrossU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept {
    const Status status =
        checkMedian(src, srcStep, dst, dstStep, w, h, mask, {kMask33, 2, kMask55, 4});
    if (status != kOk) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(medianCross)(src, srcStep, dst, dstStep, w, h, mask);
    return kOk;
}

} // namespace vel
#endif
