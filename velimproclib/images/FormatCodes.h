#pragma once

#include "velorncore10.h"

#include <cstdint>

/// Memory layout of the pixel format codes in velorncore10.h. Codes 2 and 4 and everything outside
/// 1 to 8 are invalid. In the four-channel formats the colours are elements 1, 2 and 3 of a pixel.
namespace vel {

/// Number of colours: 3, 1 for grey, 0 for an invalid format.
std::int32_t psChannels(std::int32_t format) noexcept;

/// 2 for the 16-bit formats, 1 for every other code, including invalid ones.
std::int32_t psBytesPerChannel(std::int32_t format) noexcept;

/// True if the guarded calls read a host image of `format` as 8 bits per channel. Every code but
/// `psC3U8` means 16 bits to them.
constexpr bool isEightBits(std::int32_t format) noexcept {
    return format == psC3U8;
}

} // namespace vel
