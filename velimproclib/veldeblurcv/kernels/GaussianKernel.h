#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Side of the Gaussian kernel of a standard deviation: three deviations each way.
std::int64_t gaussianKernelSize(float sigma) noexcept;

/// Gaussian blur kernel, `size` by `size`, CV_32FC1, sum 1, cut off at its square without taper.
/// A sigma of 0 gives not-a-number elements.
/// @throws std::bad_alloc or cv::Exception when there is no matrix of that size
cv::Mat createGaussianKernel(std::int64_t size, float sigma);

} // namespace vel
