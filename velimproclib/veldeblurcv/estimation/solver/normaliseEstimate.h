#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Normalises a solved kernel in place: entries below the threshold, all negative ones among them,
/// become 0, the others lose half the threshold, and all are scaled to sum 1.
///
/// Without a positive entry all become NaN.
/// @param kernel CV_32FC1, not empty, finite
/// @param floor the threshold as a fraction of the largest entry
void normaliseEstimate(cv::Mat& kernel, float floor);

} // namespace vel
