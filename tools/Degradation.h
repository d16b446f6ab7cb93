#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace velorn::tools {

/// Returns `picture` (CV_32FC3) blurred by `kernel`, without the margin of half a kernel that
/// depends on pixels outside the picture: the result is smaller by the kernel's sides less one.
cv::Mat blurInside(const cv::Mat& picture, const BlurKernel& kernel);

/// Adds independent, normally distributed noise of standard deviation `sigma` to every sample. The
/// same arguments give the same bits on every system.
cv::Mat withNoise(const cv::Mat& picture, double sigma, std::uint32_t seed);

} // namespace velorn::tools
