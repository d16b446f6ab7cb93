#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Blends `src` into `dst` in place: `dst = src*alpha + dst*(1 - alpha)`, with `alpha` cut to 0..1.
/// Both planes have equal size.
///
/// When either plane is CV_8UC1, both are taken as 8-bit; otherwise, when either is CV_32FC1, both
/// are taken as float, even if only one of them is. A row never reaches beyond what it holds of
/// such elements. The product with `alpha` is rounded to single precision, the product with
/// `1 - alpha` and the sum are double; the result is rounded to single (float form) or truncated to
/// a byte (8-bit form: 100 and 101 blend half and half to 100). An `alpha` that is not a number
/// gives not-a-number, or 0 in the 8-bit form.
///
/// Rows are shared out among the threads of a parallel region.
/// @throws const char* "alphaBlend - image type not supported"
void alphaBlend(const cv::Mat& src, cv::Mat& dst, float alpha);

} // namespace vel
