#pragma once

#include "hosts/command/codecs/EncodingOptions.h"
#include "hosts/command/pixels/Pixels.h"

#include <vector>

namespace velorn {

/// The resolution of a JPEG file in pixels per unit: 1 inch, 2 centimetre, 0 unknown.
struct PixelDensity {
    int horizontal = 1;
    int vertical = 1;
    int unit = 0;
};

/// The bytes of a JPEG file without metadata.
/// @param pixels 8 bits, grey or RGB without alpha
/// @throws Failure with the message of the encoder.
std::vector<unsigned char> encodeJpeg(const Pixels& pixels, const EncoderSettings& settings,
                                      const PixelDensity& density = {});

} // namespace velorn
