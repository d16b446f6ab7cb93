#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Blends `src` into `dst` in place: `dst = src*alpha + dst*(1 - alpha)`, with `alpha` cut to 0..1.
/// Both planes have equal size.
///
/// When either plane is CV_8UC1, both are read as 8-bit planes; otherwise, when either is CV_32FC1,
/// both are read as float planes. A row ends with the last such element that it holds. The product
/// with `alpha` is rounded to single precision, the product with `1 - alpha` and the sum are
/// double; the result is rounded to single (float form) or truncated to a byte (8-bit form: 100 and
/// 101 blend half and half to 100). A NaN `alpha` gives NaN, or 0 in the
/// 8-bit form.
///
/// The threads of a parallel region share the rows.
/// @throws const char* "alphaBlend - image type not supported"
void alphaBlend(const cv::Mat& src, cv::Mat& dst, float alpha);

} // namespace vel
