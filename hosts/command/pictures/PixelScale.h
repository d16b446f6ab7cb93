#pragma once

#include <cstdint>

namespace velorn {

/// White on the library's 16-bit scale.
inline constexpr std::uint16_t kFifteenBitWhite = 32768;

/// 0..65535 of a file to 0..32768 of the library, rounded to nearest; white to white.
constexpr std::uint16_t toFifteenBits(std::uint16_t value) {
    return static_cast<std::uint16_t>((std::uint32_t{value} * 32768u + 32767u) / 65535u);
}

/// 0..32768 of the library to 0..65535 of a file, rounded to nearest; white to white, and
/// everything above white is white too.
constexpr std::uint16_t fromFifteenBits(std::uint16_t value) {
    const std::uint32_t cut = value < kFifteenBitWhite ? value : kFifteenBitWhite;
    return static_cast<std::uint16_t>((cut * 65535u + 16384u) / 32768u);
}

} // namespace velorn
