#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Blur kernel of a lens out of focus: a disc of `radius` pixels whose rim pixels hold the share of
/// their area that the disc covers. CV_32FC1, odd square, sum 1. The side is
/// 2 * trunc(radius + 0.5) + 1, therefore a radius with a fraction of exactly one half has an outer
/// ring of zeros. Radius 0 gives a single NaN element.
/// @throws std::bad_alloc or cv::Exception when no matrix can have that size
cv::Mat createDiscKernel(float radius);

} // namespace vel
