#pragma once

#include <array>

namespace restoration {

/// Standard deviations of the noise of a picture, in levels of 255. Zeros where the picture has no
/// such plane.
struct NoiseLevels {
    float luminance = 0.0f; ///< of the only channel, or of the mean of two or four
    float chromaBlue = 0.0f;
    float chromaRed = 0.0f;
    std::array<float, 4> channels{}; ///< of the colour channels
    /// The picture was compressed in blocks: errors of neighbouring pixels depend on each other.
    bool isCompressed = false;
};

} // namespace restoration
