#pragma once

#include "velorncore10.h"

#include <cstdint>

/// Memory layout of the pixel format codes in velorncore10.h. Codes 2 and 4 and everything outside
/// 1 to 8 are invalid. In the four-channel formats the colours are elements 1, 2 and 3 of a pixel.
namespace vel {

/// Address of pixel (`x`, `y`) of an image that starts at `base`, with `step` bytes from one row to
/// the next. Null for an invalid format.
std::uint8_t* psPixelAddress(std::int32_t format, void* base, std::int32_t step, std::int32_t x,
                             std::int32_t y) noexcept;
const std::uint8_t* psPixelAddress(std::int32_t format, const void* base, std::int32_t step,
                                   std::int32_t x, std::int32_t y) noexcept;

/// Number of colours: 3, 1 for grey, 0 for an invalid format.
std::int32_t psChannels(std::int32_t format) noexcept;

/// 2 for the 16-bit formats, 1 for every other code, including invalid ones.
std::int32_t psBytesPerChannel(std::int32_t format) noexcept;

/// Bytes per pixel of the colour formats; 0 for grey and for invalid formats.
std::int32_t psBytesPerPixelColor(std::int32_t format) noexcept;

/// Returns `n` if it is a multiple of 16, otherwise `(n / 16 + 1) * 16` with truncating division.
/// That is the next multiple above for a positive `n` and the second next for a negative one: -5
/// gives 16, -20 gives 0. `n` must not exceed 2147483632; a larger one gives the lowest integer.
std::int32_t roundUp16(std::int32_t n) noexcept;

} // namespace vel
