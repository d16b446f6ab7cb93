#include "velimproclib/primitives/ChannelMoves.h"

#include "velimproclib/primitives/argumentChecks.h"
#include "velimproclib/primitives/rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/ChannelMoves.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

/// Copies `n` elements; those of the source and of the target stand `srcStride` and `dstStride`
/// elements apart.
template <std::size_t srcStride, std::size_t dstStride, class T>
void moveRow(const Unaligned<T>* HWY_RESTRICT src, Unaligned<T>* HWY_RESTRICT dst, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[dstStride * i].value = src[srcStride * i].value;
    }
}

} // namespace

void intoC3U8(const Unaligned<std::uint8_t>* src, Unaligned<std::uint8_t>* dst, std::size_t n) {
    moveRow<1, 3>(src, dst, n);
}
void intoC3U16(const Unaligned<std::uint16_t>* src, Unaligned<std::uint16_t>* dst, std::size_t n) {
    moveRow<1, 3>(src, dst, n);
}
void intoC4U8(const Unaligned<std::uint8_t>* src, Unaligned<std::uint8_t>* dst, std::size_t n) {
    moveRow<1, 4>(src, dst, n);
}
void intoC4U16(const Unaligned<std::uint16_t>* src, Unaligned<std::uint16_t>* dst, std::size_t n) {
    moveRow<1, 4>(src, dst, n);
}
void fromC3U8(const Unaligned<std::uint8_t>* src, Unaligned<std::uint8_t>* dst, std::size_t n) {
    moveRow<3, 1>(src, dst, n);
}
void fromC3U16(const Unaligned<std::uint16_t>* src, Unaligned<std::uint16_t>* dst, std::size_t n) {
    moveRow<3, 1>(src, dst, n);
}
void fromC4U8(const Unaligned<std::uint8_t>* src, Unaligned<std::uint8_t>* dst, std::size_t n) {
    moveRow<4, 1>(src, dst, n);
}
void fromC4U16(const Unaligned<std::uint16_t>* src, Unaligned<std::uint16_t>* dst, std::size_t n) {
    moveRow<4, 1>(src, dst, n);
}
void fillC4U8(std::uint8_t value, std::uint8_t* dst, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[4 * i] = value;
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(intoC3U8);
HWY_EXPORT(intoC3U16);
HWY_EXPORT(intoC4U8);
HWY_EXPORT(intoC4U16);
HWY_EXPORT(fromC3U8);
HWY_EXPORT(fromC3U16);
HWY_EXPORT(fromC4U8);
HWY_EXPORT(fromC4U16);
HWY_EXPORT(fillC4U8);

namespace {

/// Checks, and runs the row kernel over the rows; pixels have `srcChannels` and `dstChannels`
/// elements.
template <std::size_t srcChannels, std::size_t dstChannels, class Row, class T>
Status moveRows(Row&& row, const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep,
                std::int32_t w, std::int32_t h) noexcept {
    const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep});
    if (status != kOk) {
        return status;
    }
    const Extent extent = joinAdjacentRows(
        w, h, {{srcStep, srcChannels * sizeof(T)}, {dstStep, dstChannels * sizeof(T)}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        row(unaligned(rowAt(src, srcStep, y)), unaligned(rowAt(dst, dstStep, y)), extent.columns);
    }
    return kOk;
}

} // namespace

Status planeToChannelC3U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<1, 3>(HWY_DYNAMIC_DISPATCH(intoC3U8), src, srcStep, dst, dstStep, w, h);
}

Status planeToChannelC3U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<1, 3>(HWY_DYNAMIC_DISPATCH(intoC3U16), src, srcStep, dst, dstStep, w, h);
}

Status channelToPlaneC3U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<3, 1>(HWY_DYNAMIC_DISPATCH(fromC3U8), src, srcStep, dst, dstStep, w, h);
}

Status channelToPlaneC3U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<3, 1>(HWY_DYNAMIC_DISPATCH(fromC3U16), src, srcStep, dst, dstStep, w, h);
}

Status planeToChannelC4U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<1, 4>(HWY_DYNAMIC_DISPATCH(intoC4U8), src, srcStep, dst, dstStep, w, h);
}

Status planeToChannelC4U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<1, 4>(HWY_DYNAMIC_DISPATCH(intoC4U16), src, srcStep, dst, dstStep, w, h);
}

Status channelToPlaneC4U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<4, 1>(HWY_DYNAMIC_DISPATCH(fromC4U8), src, srcStep, dst, dstStep, w, h);
}

Status channelToPlaneC4U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<4, 1>(HWY_DYNAMIC_DISPATCH(fromC4U16), src, srcStep, dst, dstStep, w, h);
}

Status setChannelC4U8(std::uint8_t value, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
                      std::int32_t h) noexcept {
    const Status status = checkArguments({dst}, {w, h}, {dstStep});
    if (status != kOk) {
        return status;
    }
    const Extent extent = joinAdjacentRows(w, h, {{dstStep, 4}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        HWY_DYNAMIC_DISPATCH(fillC4U8)(value, rowAt(dst, dstStep, y), extent.columns);
    }
    return kOk;
}

} // namespace vel
#endif
