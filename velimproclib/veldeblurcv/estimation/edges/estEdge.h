#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Predicts the sharp edges of a blurred image: a bilateral filter, then a one-step shock filter,
/// in which each pixel takes the nearer of its local extremes. Flat ramps become steps. A pixel
/// halfway between its extremes takes the higher one.
///
/// @param src CV_8UC1, not empty
/// @param dst CV_8UC1, created; distinct from `src`
/// @param d diameter of the bilateral filter in pixels; 0 and below copies instead
/// @param sigmaColor,sigmaSpace of the bilateral filter, in grey levels and in pixels
/// @param shockIters passes of the 3 by 3 extremes; 0 and below omits the shock filter
///
/// The one-pixel frame keeps the values of the bilateral filter. Two sections compute the two
/// extremes, and the threads share the rows of the last step; the result does not depend on the
/// number of threads.
/// @throws cv::Exception for an empty image; cv::Exception or std::bad_alloc when memory is
///         exhausted
void estEdge(const cv::Mat& src, cv::Mat& dst, int d, float sigmaColor, float sigmaSpace,
             int shockIters);

} // namespace vel
