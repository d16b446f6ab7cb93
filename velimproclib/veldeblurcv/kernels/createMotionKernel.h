#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Blur kernel of straight motion: an anti-aliased line of `length` pixels through the centre. At
/// positive angles it rises to the right on a screen whose rows run downwards. CV_32FC1, odd sides,
/// sum 1. Lengths below 1 count as 1; angles are folded into 0..180 degrees. An angle that is not
/// finite gives a single NaN element.
/// @throws std::bad_alloc or cv::Exception when no matrix can have that size
cv::Mat createMotionKernel(float length, float angleDegrees);

} // namespace vel
