#pragma once

#include "velorncore10.h"

#include <opencv2/core.hpp>

namespace vel {

/// Luminance of a host image on the 8-bit scale: the sum of 0.299, 0.587 and 0.114 times a pixel's
/// samples in memory order, rounded to single precision, limited to 255 and truncated.
///
/// @param image psC3U8, or with any other format code three interleaved 16-bit channels on the
///              15-bit scale, which the weights reduce to 8 bits. `width` and `height` at least 1,
///              `data` at any address, `step` any number of bytes
/// @param luminance created with `height` rows and `width` columns, CV_8UC1
///
/// The threads of a parallel region share the rows.
/// @throws cv::Exception when memory is exhausted
void lumaToMat(const PlaneRecord& image, cv::Mat& luminance);

} // namespace vel
