#pragma once

#include "velimproclib/veldeblurcv/shrinkage/BuiltShrinkTable.h"

#include <opencv2/core.hpp>

/// The shrinkage of whole gradient planes. The deconvolution shrinks line by line instead
/// (ShrinkCurve.h); with the stored table both agree to 2 units in the last place.
///
/// Planes are CV_32FC1 of one size and do not share pixels. `beta` is a weight of the schedule
/// (betaSchedule.h).
namespace vel {

/// w = shrink(v) by the stored table for `alpha` in 0..1. Clamps `v` in place to -10..10, the range
/// of the table.
void applyShrink(cv::Mat& w, cv::Mat& v, double alpha, double beta);

/// w = shrink(v) by a built table; `v` is only read.
void applyShrink(cv::Mat& w, const cv::Mat& v, const BuiltShrinkTable& table, double beta);

} // namespace vel
