#pragma once

#include "restoration/pictures/PictureReader.h"

#include <functional>

namespace restoration {

/// The colour channels of a picture, row by row.
struct ColourRows {
    int width = 0;
    int height = 0;
    int channels = 0; ///< 1..4, without alpha
    /// Distance of neighbouring values of samples: 1/255, 1/65535, or 0 for floats.
    float step = 0.0f;
    /// Writes the `width` samples of a row to `target`, 1.0 = white.
    std::function<void(int row, int channel, float* target)> load;
};

/// The rows of a picture in the host's memory.
ColourRows colourRows(const PictureReader& picture);

} // namespace restoration
