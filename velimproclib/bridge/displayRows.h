#pragma once

#include "velimproclib/primitives/base/rows.h"

#include <cstddef>
#include <cstdint>

/// Rows of the display conversions. Source and target do not overlap. The results are the same on
/// every processor variant. The 16-bit forms shift every element of the 15-bit scale right by 7 and
/// limit it to 255.
namespace vel {

/// Converts red, green, blue to display pixels: bytes blue, green, red, 255.
void displayRow(const Unaligned<std::uint8_t>* rgb, std::uint8_t* bgra,
                std::size_t pixels) noexcept;
void displayRow(const Unaligned<std::uint16_t>* rgb, std::uint8_t* bgra,
                std::size_t pixels) noexcept;

/// Extracts one of the three colours, 0 to 2, as bytes.
void colourRow(const Unaligned<std::uint8_t>* rgb, int colour, std::uint8_t* plane,
               std::size_t pixels) noexcept;
void colourRow(const Unaligned<std::uint16_t>* rgb, int colour, std::uint8_t* plane,
               std::size_t pixels) noexcept;

/// Packs the colours of display pixels as red, green, blue, three bytes per pixel.
void packRgbRow(const std::uint8_t* bgra, std::uint8_t* rgb, std::size_t pixels) noexcept;

/// Writes packed colours back to display pixels. Alpha is unchanged.
void unpackRgbRow(const std::uint8_t* rgb, std::uint8_t* bgra, std::size_t pixels) noexcept;

} // namespace vel
