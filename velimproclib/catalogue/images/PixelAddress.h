#pragma once

#include <cstdint>

/// Pixels in memory by the format codes in velorncore10.h, see images/FormatCodes.h.
namespace vel {

/// Address of pixel (`x`, `y`) of an image that starts at `base`, with `step` bytes from one row to
/// the next. Null for an invalid format.
std::uint8_t* psPixelAddress(std::int32_t format, void* base, std::int32_t step, std::int32_t x,
                             std::int32_t y) noexcept;
const std::uint8_t* psPixelAddress(std::int32_t format, const void* base, std::int32_t step,
                                   std::int32_t x, std::int32_t y) noexcept;

/// Bytes per pixel of the colour formats; 0 for grey and for invalid formats.
std::int32_t psBytesPerPixelColor(std::int32_t format) noexcept;

} // namespace vel
