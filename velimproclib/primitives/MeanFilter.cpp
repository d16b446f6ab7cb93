#include "velimproclib/primitives/MeanFilter.h"

#include "velimproclib/primitives/neighbourhoods.h"
#include "velimproclib/primitives/rows.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/MeanFilter.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

// Multiplier and shift stand for the division by the number of pixels.
struct Mean3x3 {
    static constexpr std::ptrdiff_t kRadius = 1;
    static std::uint32_t of(std::uint32_t sum) { return ((sum + 5) * 455) >> 12; }
};

struct Mean5x5 {
    static constexpr std::ptrdiff_t kRadius = 2;
    static std::uint32_t of(std::uint32_t sum) { return ((sum + 13) * 10485) >> 18; }
};

template <class Mean>
void meanRow(const std::uint8_t* src, std::ptrdiff_t step, std::uint8_t* HWY_RESTRICT dst,
             std::ptrdiff_t w) {
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        std::uint32_t sum = 0;
        for (std::ptrdiff_t dy = -Mean::kRadius; dy <= Mean::kRadius; ++dy) {
            for (std::ptrdiff_t dx = -Mean::kRadius; dx <= Mean::kRadius; ++dx) {
                sum += src[x + dy * step + dx];
            }
        }
        dst[x] = static_cast<std::uint8_t>(Mean::of(sum));
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
    const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep});
    if (status != kOk) {
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
