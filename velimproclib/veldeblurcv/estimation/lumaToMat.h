#pragma once

#include "velorncore10.h"

#include <opencv2/core.hpp>

namespace vel {

/// Luminance of a host image, on the 8-bit scale: 0.299, 0.587 and 0.114 of a pixel's samples in
/// memory order, rounded to single precision, cut at 255 and truncated.
///
/// @param image psC3U8, or with any other format code three interleaved 16-bit channels, whose 15
///              bits the weights bring down to 8. `width` and `height` at least 1, `data` at any
///              address, `step` any number of bytes
/// @param luminance created `height` by `width`, CV_8UC1
///
/// Rows are shared out among the threads of a parallel region.
/// @throws cv::Exception when memory is exhausted
void lumaToMat(const PlaneRecord& image, cv::Mat& luminance);

} // namespace vel
