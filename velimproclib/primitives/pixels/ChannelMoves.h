#pragma once

#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Moves between planes and one channel of interleaved images, one element per pixel.
///
/// The pointer of the interleaved side points at the channel: the pixel's address plus the
/// element's offset. Elements before the first and after the last of the region are neither read
/// nor written; therefore a region may start and end with its memory block. Regions are `w` by `h`
/// pixels and do not overlap; steps are bytes between rows, above 0 and of any alignment. All
/// return `kOk`, `kNullPointer`, `kBadSize` or `kBadStep`, checked in this order, and write nothing
/// when a check fails.
///
/// Re-entrant. The other channels between the first and the last element keep their values, but may
/// be read and written back: two threads must not fill channels of the same rows of one image at
/// the same time.
namespace vel {

/// `dst[3x] = src[x]`.
Status planeToChannelC3U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status planeToChannelC3U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// `dst[x] = src[3x]`.
Status channelToPlaneC3U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
/// The same from an image at any address.
Status unalignedChannelToPlaneC3U16(const Unaligned<std::uint16_t>* src, std::int32_t srcStep,
                                    std::uint16_t* dst, std::int32_t dstStep, std::int32_t w,
                                    std::int32_t h) noexcept;

/// `dst[4x] = src[x]`.
Status planeToChannelC4U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// `dst[4x] = value`.
Status setChannelC4U8(std::uint8_t value, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
                      std::int32_t h) noexcept;

} // namespace vel
