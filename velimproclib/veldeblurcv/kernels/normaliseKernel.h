#pragma once

#include <opencv2/core.hpp>
#include <span>

/// The last step of every kernel shape: the elements are divided by their sum.
namespace vel {

/// Divides every element of `kernel` (CV_32FC1) by `sum`, in single precision.
void normaliseKernel(cv::Mat& kernel, float sum);

/// Divides `elements`, row by row, by `sum` in double precision and writes the quotients, rounded
/// to single, to `kernel` (CV_32FC1 without gaps between rows), which has as many elements.
void normaliseKernel(std::span<const double> elements, float sum, cv::Mat& kernel);

} // namespace vel
