#pragma once

#include "hosts/command/formats/Format.h"
#include "hosts/command/pixels/Samples.h"

#include <cstddef>

namespace velorn {

/// The pixels of a picture as the restoration takes them: interleaved, grey or RGB, alpha last and
/// not multiplied into the colours, on a display's curve, 0..255 or 0..65535.
struct Pixels {
    int width = 0;
    int height = 0;
    int channels = 0;
    Samples samples;

    int bits() const { return samples.index() == 0 ? 8 : 16; }
    PictureShape shape() const { return {width, height, channels, bits()}; }
    std::size_t pixelCount() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
};

/// Black pixels of this shape.
Pixels blackPixels(const PictureShape& shape);

/// `pixels` with the depth and the channels of `shape`; the sides stay. Sixteen bits are rounded to
/// eight, eight are stretched to sixteen. A new alpha channel is opaque, grey as RGB has three
/// equal channels, and RGB never becomes grey.
Pixels withShape(Pixels pixels, const PictureShape& shape);

} // namespace velorn
