#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Predicts the sharp edges of a blurred picture: a bilateral filter, then a one-step shock filter,
/// in which every pixel jumps to the nearer of its local extremes, so that flat ramps become steps.
/// A pixel halfway between them takes the higher one.
///
/// @param src CV_8UC1, not empty
/// @param dst CV_8UC1, created; distinct from `src`
/// @param d diameter of the bilateral filter in pixels; 0 and below copies instead
/// @param sigmaColor,sigmaSpace of the bilateral filter, in grey levels and in pixels
/// @param shockIters passes of the 3 by 3 extremes; 0 and below leaves the shock step out
///
/// The one-pixel frame keeps the bilateral filter's values. The two extremes are computed in two
/// sections, the jump by rows; results do not depend on the number of threads.
/// @throws cv::Exception for an empty image, and when memory is exhausted; std::bad_alloc
void estEdge(const cv::Mat& src, cv::Mat& dst, int d, float sigmaColor, float sigmaSpace,
             int shockIters);

} // namespace vel
