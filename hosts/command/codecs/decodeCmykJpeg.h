#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace velorn {

/// The inks of a CMYK or YCCK JPEG file, four 8-bit samples for each pixel, 0 for no ink.
/// @throws Failure with the message of the decoder.
std::vector<std::uint8_t> decodeCmykJpeg(std::span<const unsigned char> file);

} // namespace velorn
