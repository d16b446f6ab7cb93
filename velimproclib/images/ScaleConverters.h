#pragma once

#include <cstdint>

/// One channel between the 8-bit scale and the host's 15-bit scale, whose white is 32768. The two
/// are exact inverses on the 256 grey levels. Steps are bytes between rows, of any alignment;
/// source and target do not overlap. Where a pointer is null, a size or a step below 1, the target
/// stays as it was. Re-entrant.
namespace vel {

/// `out = (v + 1) * 128`, the upper edge of the level's bin: black becomes 128 and white 32768.
void convertU8toU15(const std::uint8_t* src, std::int32_t srcStep, std::int32_t width,
                    std::int32_t height, std::uint16_t* dst, std::int32_t dstStep) noexcept;

/// `max(v - 128, 0) / 128` to the nearest integer, ties to even, cut at 255.
/// @throws `kNoPixels` when there is no memory for the plane between the two steps
void convertU15toU8(const std::uint16_t* src, std::int32_t srcStep, std::int32_t width,
                    std::int32_t height, std::uint8_t* dst, std::int32_t dstStep);

} // namespace vel
