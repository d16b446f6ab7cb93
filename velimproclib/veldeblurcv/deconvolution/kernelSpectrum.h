#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"
#include "velimproclib/veldeblurcv/deconvolution/ThreadScratch.h"

#include <opencv2/core.hpp>

namespace vel {

/// Places the kernel (CV_32FC1) in a `side` by `side` plane of zeros for circular convolution: the
/// centre (rows/2, cols/2) goes to (0, 0), and elements above or left of it wrap to the far ends. A
/// kernel larger than the plane wraps more than once and its elements add up, which is the same
/// blur of a periodic plane.
/// @throws cv::Exception when memory for the plane is exhausted
cv::Mat placeKernel(const cv::Mat& kernel, int side);

/// The half spectrum of the placed kernel for the square transform `fft`. `scratch` holds at least
/// `fft.scratchFloats()` floats for each thread.
/// @throws std::bad_alloc; cv::Exception when memory for the plane is exhausted
void transformKernel(const cv::Mat& kernel, const RealFft2D& fft, ThreadScratch& scratch,
                     AlignedFloats& spectrum);

} // namespace vel
