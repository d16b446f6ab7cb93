#include "velimproclib/primitives/filters/MeanFilter.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/filters/neighbourhoods.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/filters/MeanFilter.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

inline std::uint16_t highHalf(std::uint32_t a, std::uint32_t b) {
    return static_cast<std::uint16_t>((a * b) >> 16);
}

// The factor and the shift divide by the number of pixels. They are scaled to a shift of at least
// 16 bits, because vectors of 16-bit elements multiply and shift by 16 in one instruction: 455 >>
// 12 is 7280 >> 16, and 10485 >> 18 is 10485 >> 16 >> 2.
struct Mean3x3 {
    static constexpr std::ptrdiff_t kSide = 3;
    static std::uint16_t of(std::uint16_t sum) { return highHalf(sum + 5u, 7280u); }
};

struct Mean5x5 {
    static constexpr std::ptrdiff_t kSide = 5;
    static std::uint16_t of(std::uint16_t sum) {
        return static_cast<std::uint16_t>(highHalf(sum + 13u, 10485u) >> 2);
    }
};

constexpr std::ptrdiff_t kBlock = 256;

// Sums down the columns first, then sums these along the row.
template <class Mean>
void meanBlock(const std::uint8_t* src, std::int64_t step, std::uint8_t* HWY_RESTRICT dst,
               std::ptrdiff_t w) {
    constexpr std::ptrdiff_t kRadius = Mean::kSide / 2;
    std::uint16_t columnSums[kBlock + Mean::kSide - 1];
    const std::uint8_t* top = bytesAway(src, -kRadius * step - kRadius);
    for (std::ptrdiff_t x = 0; x < w + 2 * kRadius; ++x) {
        std::uint16_t sum = 0;
        for (std::ptrdiff_t y = 0; y < Mean::kSide; ++y) {
            sum =
                static_cast<std::uint16_t>(sum + rowAt(top, step, static_cast<std::size_t>(y))[x]);
        }
        columnSums[x] = sum;
    }
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        std::uint16_t sum = 0;
        for (std::ptrdiff_t i = 0; i < Mean::kSide; ++i) {
            sum = static_cast<std::uint16_t>(sum + columnSums[x + i]);
        }
        dst[x] = static_cast<std::uint8_t>(Mean::of(sum));
    }
}

template <class Mean>
void meanRow(const std::uint8_t* src, std::int64_t step, std::uint8_t* dst, std::ptrdiff_t w) {
    for (std::ptrdiff_t x = 0; x < w; x += kBlock) {
        meanBlock<Mean>(src + x, step, dst + x, std::min(kBlock, w - x));
    }
}

} // namespace

void meanRows(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
              std::int32_t dstStep, std::int32_t w, std::int32_t h, std::int32_t mask) {
    const auto row = mask == kMask33 ? meanRow<Mean3x3> : meanRow<Mean5x5>;
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        row(rowAt(src, srcStep, y), srcStep, rowAt(dst, dstStep, y), w);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(meanRows);

} // namespace

Status meanFilterU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                    std::int32_t dstStep, std::int32_t w, std::int32_t h,
                    std::int32_t mask) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    if (mask != kMask33 && mask != kMask55) {
        return kBadMask;
    }
    const Status borderStatus = checkBorderStep(srcStep, w, mask == kMask33 ? 2 : 4, 1);
    if (borderStatus != kOk) {
        return borderStatus;
    }
    HWY_DYNAMIC_DISPATCH(meanRows)(src, srcStep, dst, dstStep, w, h, mask);
    return kOk;
}

} // namespace vel
#endif
