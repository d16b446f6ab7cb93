#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Smooths an edge image with five Gaussian taps in fixed point, along the rows and then along the
/// columns, each pass rounded to nearest. The ring of two pixels at the border keeps its values.
/// @param edge CV_8UC1, filtered in place
/// @param scratch CV_8UC1 of the same size, overwritten inside the ring. The column pass also reads
///                its rows in the ring, so these take part in the result
/// @param sigma standard deviation in pixels, above 0
void softenEdges(cv::Mat& edge, cv::Mat& scratch, float sigma);

} // namespace vel
