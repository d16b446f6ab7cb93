#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Bilateral filter of an 8-bit image over a disc: each pixel becomes the mean of its neighbours,
/// weighted by two Gaussians, one of the distance in pixels and one of the difference in grey
/// levels. The image continues beyond its border by reflection about the outermost pixels.
///
/// A weight is the product of two floats. Weights and weighted values are summed in single
/// precision over the disc, row by row, a rounding after each operation; the quotient is rounded to
/// nearest. The result is the same on every processor, for every number of threads, and equals
/// `cv::bilateralFilter` where OpenCV runs without fused multiply-adds.
///
/// @param src CV_8UC1, not empty
/// @param dst CV_8UC1, created; distinct from `src`
/// @param diameter of the disc in pixels, at least 1; an even one acts as the next odd one, and 1
///                 acts as 3
/// @param sigmaColor,sigmaSpace in grey levels and in pixels; 0 and below act as 1
/// @throws cv::Exception for an empty image or one of another type, and when memory is exhausted
///
/// The method is that of C. Tomasi and R. Manduchi, Bilateral filtering for gray and color images,
/// 1998. The threads of a parallel region share the rows.
void bilateralFilter(const cv::Mat& src, cv::Mat& dst, int diameter, float sigmaColor,
                     float sigmaSpace);

} // namespace vel
