#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Side of the Gaussian kernel with standard deviation `sigma`: three deviations in each direction.
std::int64_t gaussianKernelSize(float sigma) noexcept;

/// Gaussian blur kernel, `size` by `size`, CV_32FC1, sum 1, cut off at the edge of the square
/// without a taper. A sigma of 0 gives NaN elements.
/// @throws std::bad_alloc or cv::Exception when no matrix can have that size
cv::Mat createGaussianKernel(std::int64_t size, float sigma);

} // namespace vel
