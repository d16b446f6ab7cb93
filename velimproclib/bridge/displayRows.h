#pragma once

#include <cstddef>
#include <cstdint>

/// Rows of the display conversions. Rows stand at any address and do not overlap; the same bytes on
/// every processor variant. The 16-bit forms take the 15-bit scale: every element is shifted right
/// by 7 and cut at 255.
namespace vel {

/// Red, green, blue to display pixels: bytes blue, green, red, 255.
void displayRow(const std::uint8_t* rgb, std::uint8_t* bgra, std::size_t pixels) noexcept;
void displayRow(const std::uint16_t* rgb, std::uint8_t* bgra, std::size_t pixels) noexcept;

/// One of the three colours, 0 to 2, as bytes.
void colourRow(const std::uint8_t* rgb, int colour, std::uint8_t* plane,
               std::size_t pixels) noexcept;
void colourRow(const std::uint16_t* rgb, int colour, std::uint8_t* plane,
               std::size_t pixels) noexcept;

/// The colours of display pixels as red, green, blue without gaps.
void packRgbRow(const std::uint8_t* bgra, std::uint8_t* rgb, std::size_t pixels) noexcept;

/// The reverse; alpha keeps its value.
void unpackRgbRow(const std::uint8_t* rgb, std::uint8_t* bgra, std::size_t pixels) noexcept;

} // namespace vel
