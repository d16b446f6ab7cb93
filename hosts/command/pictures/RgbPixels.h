#pragma once

#include "hosts/command/pixels/Samples.h"

#include <cstddef>

namespace velorn {

/// A picture in the form that the library takes: red, green and blue interleaved, 8 bits per
/// channel, or 16 bits per channel on the scale 0..32768.
struct RgbPixels {
    int width = 0;
    int height = 0;
    Samples samples;

    std::size_t pixelCount() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
    bool isEightBit() const { return std::holds_alternative<std::vector<std::uint8_t>>(samples); }

    /// The index of the red sample of the pixel at (column, row).
    std::size_t sampleIndex(int column, int row) const {
        return 3 * (static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                    static_cast<std::size_t>(column));
    }
};

} // namespace velorn
