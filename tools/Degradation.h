#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace velorn::tools {

/// `picture` (CV_32FC3) blurred by `kernel`, without the margin of half a kernel in which the
/// picture's surroundings would be missing: smaller than `picture` by the kernel's sides less one.
cv::Mat blurInside(const cv::Mat& picture, const BlurKernel& kernel);

/// Adds normally distributed noise of standard deviation `sigma`, apart for every sample. The same
/// arguments give the same bits on every system.
cv::Mat withNoise(const cv::Mat& picture, double sigma, std::uint32_t seed);

} // namespace velorn::tools
