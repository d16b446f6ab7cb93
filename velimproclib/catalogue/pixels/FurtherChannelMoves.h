#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Moves between planes and one channel of interleaved images: the rules of
/// primitives/pixels/ChannelMoves.h.
namespace vel {

/// `dst[4x] = src[x]`.
Status planeToChannelC4U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// `dst[x] = src[3x]`.
Status channelToPlaneC3U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// `dst[x] = src[4x]`.
Status channelToPlaneC4U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status channelToPlaneC4U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

} // namespace vel
