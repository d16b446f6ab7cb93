#include "velimproclib/catalogue/pixels/FurtherChannelMoves.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <cstddef>

namespace vel {
namespace {

/// dst[dstStride * x] = src[srcStride * x]; strides count elements.
template <std::size_t srcStride, std::size_t dstStride, class T>
Status move(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, std::int32_t w,
            std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        const auto* from = rowAt(unaligned(src), srcStep, y);
        auto* to = rowAt(unaligned(dst), dstStep, y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(w); ++x) {
            to[dstStride * x].value = from[srcStride * x].value;
        }
    }
    return kOk;
}

} // namespace

Status planeToChannelC4U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return move<1, 4>(src, srcStep, dst, dstStep, w, h);
}

Status channelToPlaneC3U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return move<3, 1>(src, srcStep, dst, dstStep, w, h);
}

Status channelToPlaneC4U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return move<4, 1>(src, srcStep, dst, dstStep, w, h);
}

Status channelToPlaneC4U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return move<4, 1>(src, srcStep, dst, dstStep, w, h);
}

} // namespace vel
