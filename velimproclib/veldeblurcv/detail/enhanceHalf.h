#pragma once

#include "velimproclib/images/Image.h"
#include "velimproclib/veldeblurcv/detail/DetailCurve.h"
#include "velimproclib/veldeblurcv/detail/EdgeSmoother.h"

#include <opencv2/core.hpp>

namespace vel {

/// Enhances the detail of one half of a luminance plane in place: with I the half cut to 0..1, u
/// its edge-preserving base layer and f the curve, the half becomes u + f(I - u). The base lies in
/// 0..1; the sum is not cut.
/// @param half CV_32FC1, 1.0 = full scale
/// @param detail, guide scratch, at least as large as the half; `detail` ends as f(I - u)
/// @param smoother the workspace; serves this half alone
/// @param curve may serve several halves at once, with the same two settings
/// @param detailGain strength: negative weakens, above 0 counts threefold
/// @param detailGamma above 0 lifts fine detail and holds strong detail back; below 0 the reverse
/// @throws `kNoSmootherMemory` when there is no memory for the workspace
void enhanceHalf(cv::Mat& half, IMG<float, 1>& detail, IMG<float, 1>& guide,
                 CEdgeSmoother& smoother, CDetailCurve& curve, float detailGain, float detailGamma);

} // namespace vel
