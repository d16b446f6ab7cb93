#pragma once

#include "hosts/command/pictures/RgbPixels.h"

#include <vector>

namespace velorn {

/// A picture's luminance, in levels of an 8-bit picture (white is 255).
struct Luminance {
    int width = 0;
    int height = 0;
    std::vector<float> levels;

    float at(int column, int row) const {
        return levels[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(column)];
    }
};

Luminance luminanceOf(const RgbPixels& pixels);

} // namespace velorn
