#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Copies a frame from `src` to `dst`: the first `top` rows, the last `bottom` rows, the first
/// `left` columns and the last `right` columns. Both planes have the same size and element type. A
/// width beyond the side of the plane means the whole side, a width below 0 means 0.
void copyFrame(const cv::Mat& src, cv::Mat& dst, int top, int bottom, int left, int right);

} // namespace vel
