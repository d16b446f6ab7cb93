#pragma once

#include "velorncore10.h"

#include <cstdint>

/// What the host's pixel format codes (`psC3U8` and the others of the exported header) mean in
/// memory. Codes 2 and 4 and everything outside 1 to 8 are invalid. In the four-channel formats the
/// first element of a pixel is not a colour: colours are elements 1, 2 and 3.
namespace vel {

/// Address of pixel (`x`, `y`) of an image that starts at `base` with `step` bytes between rows;
/// null for an invalid format.
std::uint8_t* psPixelAddress(std::int32_t format, void* base, std::int32_t step, std::int32_t x,
                             std::int32_t y) noexcept;
const std::uint8_t* psPixelAddress(std::int32_t format, const void* base, std::int32_t step,
                                   std::int32_t x, std::int32_t y) noexcept;

/// Number of colours: 3, or 1 for grey; 0 for an invalid format.
std::int32_t psChannels(std::int32_t format) noexcept;

/// 2 for the 16-bit formats, 1 for every other value, invalid ones included.
std::int32_t psBytesPerChannel(std::int32_t format) noexcept;

/// Bytes of a pixel of the colour formats; 0 for grey and for invalid formats.
std::int32_t psBytesPerPixelColor(std::int32_t format) noexcept;

/// `n` when it is a multiple of 16, else `(n / 16 + 1) * 16` with the division truncating: the next
/// multiple above for positive `n`, and for a negative one the second next, as -5 gives 16 and -20
/// gives 0. `n` is at most 2147483632, the largest multiple of 16 that the result can hold; beyond
/// it the result wraps to the lowest integer.
std::int32_t roundUp16(std::int32_t n) noexcept;

} // namespace vel
