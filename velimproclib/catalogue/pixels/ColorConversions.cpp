#include "velimproclib/catalogue/pixels/ColorConversions.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/pixels/Conversions.h"

#include <cstddef>

namespace vel {
namespace {

/// Rows of `w` pixels are 3 `w` elements, which an int32 need not hold. Therefore the conversion of
/// planes runs on three strips of `w` columns.
template <class Convert, class From, class To, class... Round>
Status convertStrips(Convert&& convert, const From* src, std::int32_t srcStep, To* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     Round... round) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    for (std::ptrdiff_t strip = 0; strip < 3; ++strip) {
        convert(src + strip * w, srcStep, dst + strip * w, dstStep, w, h, round...);
    }
    return kOk;
}

} // namespace

Status convertU8toF32C3(const std::uint8_t* src, std::int32_t srcStep, float* dst,
                        std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertStrips(convertU8toF32, src, srcStep, dst, dstStep, w, h);
}

Status convertU16toF32C3(const std::uint16_t* src, std::int32_t srcStep, float* dst,
                         std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertStrips(convertU16toF32, src, srcStep, dst, dstStep, w, h);
}

Status convertF32toU8C3(const float* src, std::int32_t srcStep, std::uint8_t* dst,
                        std::int32_t dstStep, std::int32_t w, std::int32_t h,
                        std::int32_t round) noexcept {
    return convertStrips(convertF32toU8, src, srcStep, dst, dstStep, w, h, round);
}

Status convertF32toU16C3(const float* src, std::int32_t srcStep, std::uint16_t* dst,
                         std::int32_t dstStep, std::int32_t w, std::int32_t h,
                         std::int32_t round) noexcept {
    return convertStrips(convertF32toU16, src, srcStep, dst, dstStep, w, h, round);
}

} // namespace vel
