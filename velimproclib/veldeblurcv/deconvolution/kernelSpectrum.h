#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <opencv2/core.hpp>

namespace vel {

/// The kernel (CV_32FC1) in a `side` by `side` plane of zeros, its centre (rows/2, cols/2) at
/// (0, 0) and what lies above or left of the centre wrapped to the far ends, as circular
/// convolution needs it. A kernel larger than the plane is wrapped round it more than once and its
/// elements add up: the same blur, of a periodic plane.
/// @throws cv::Exception when there is no memory for the plane
cv::Mat placeKernel(const cv::Mat& kernel, int side);

/// The half spectrum of the placed kernel for the square transform `fft`. `scratch` is that of the
/// transform.
/// @throws std::bad_alloc; cv::Exception when there is no memory for the plane
void transformKernel(const cv::Mat& kernel, const RealFft2D& fft, float* scratch,
                     AlignedFloats& spectrum);

} // namespace vel
