#pragma once

#include <cstdint>

namespace velorn {

/// White on the library's 16-bit scale.
inline constexpr std::uint16_t kFifteenBitWhite = 32768;

/// Converts 0..65535, the scale of files, to 0..32768, the scale of the library. Rounds to nearest;
/// white stays white.
constexpr std::uint16_t toFifteenBits(std::uint16_t value) {
    return static_cast<std::uint16_t>((std::uint32_t{value} * 32768u + 32767u) / 65535u);
}

/// Converts 0..32768, the scale of the library, to 0..65535, the scale of files. Rounds to nearest;
/// white stays white, and values above white become white.
constexpr std::uint16_t fromFifteenBits(std::uint16_t value) {
    const std::uint32_t cut = value < kFifteenBitWhite ? value : kFifteenBitWhite;
    return static_cast<std::uint16_t>((cut * 65535u + 16384u) / 32768u);
}

} // namespace velorn
