#pragma once

#include "hosts/command/pictures/RgbPixels.h"

#include <vector>

namespace velorn {

/// The share of each channel in the luminance (ITU-R BT.601).
inline constexpr double kRedShare = 0.299;
inline constexpr double kGreenShare = 0.587;
inline constexpr double kBlueShare = 0.114;

/// The luminance of a picture in levels of an 8-bit picture: white is 255.
struct Luminance {
    int width = 0;
    int height = 0;
    std::vector<float> levels;

    float at(int column, int row) const {
        return levels[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(column)];
    }
};

/// The luminance of `pixels`, of the same size.
Luminance luminanceOf(const RgbPixels& pixels);

} // namespace velorn
