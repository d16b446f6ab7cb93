#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Blur kernel of straight motion: an anti-aliased line of `length` pixels through the centre,
/// rising to the right at positive angles on a screen whose rows run downward. CV_32FC1, odd sides,
/// sum 1. Lengths below 1 count as 1; angles are folded into 0..180 degrees. Angles that are not
/// finite give a single not-a-number element.
/// @throws std::bad_alloc or cv::Exception when there is no matrix of that size
cv::Mat createMotionKernel(float length, float angleDegrees);

} // namespace vel
