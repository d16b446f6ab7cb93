#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Blur kernel of a lens out of focus: a disc of `radius` pixels whose rim pixels hold the share of
/// their area that the disc covers. CV_32FC1, odd square, sum 1; side 2 * trunc(radius + 0.5) + 1,
/// so that a radius of exactly a half pixel more keeps an outer ring of zeros. Radius 0 gives a
/// single not-a-number element.
/// @throws std::bad_alloc or cv::Exception when there is no matrix of that size
cv::Mat createDiscKernel(float radius);

} // namespace vel
