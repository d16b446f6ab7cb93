#pragma once

#include "velimproclib/primitives/base/rows.h"

#include <cstdint>

/// Conversions of one channel between the 8-bit scale and the 15-bit scale of the host, where white
/// is 32768. They are exact inverses on the 256 grey levels. Steps count bytes and may be odd;
/// 16-bit pixels may start at any address.
/// Source and target do not overlap. A null pointer, or a size or step below 1, leaves the target
/// unchanged. Re-entrant.
namespace vel {

/// `out = (v + 1) * 128`, the upper edge of the bin of a level: black becomes 128, white 32768.
void convertU8toU15(const std::uint8_t* src, std::int32_t srcStep, std::int32_t width,
                    std::int32_t height, Unaligned<std::uint16_t>* dst,
                    std::int32_t dstStep) noexcept;

/// `out = max(v - 128, 0) / 128`, rounded to the nearest integer, ties to even, at most 255.
/// @throws `kNoPixels` if the allocation of the intermediate plane fails
void convertU15toU8(const Unaligned<std::uint16_t>* src, std::int32_t srcStep, std::int32_t width,
                    std::int32_t height, std::uint8_t* dst, std::int32_t dstStep);

} // namespace vel
