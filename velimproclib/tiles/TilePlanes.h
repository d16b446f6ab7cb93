#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace vel {

/// The three planes of a tile, CV_32FC1 and equal in size and row step, 1.0 = full scale: red,
/// green and blue in the host's order, or luminance and two offset chroma planes between the colour
/// twists.
using TilePlanes = std::array<cv::Mat, 3>;

} // namespace vel
