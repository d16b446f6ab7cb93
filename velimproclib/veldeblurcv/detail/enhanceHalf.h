#pragma once

#include "velimproclib/images/Image.h"
#include "velimproclib/veldeblurcv/detail/DetailCurve.h"
#include "velimproclib/veldeblurcv/detail/EdgeSmoother.h"

#include <opencv2/core.hpp>

namespace vel {

/// Enhances the detail of one half of a luminance plane in place: with I the half cut to 0..1, u
/// its edge-preserving base layer and f the curve, the half becomes u + f(I - u). The base layer
/// lies in 0..1; the sum is not cut.
/// @param half CV_32FC1, 1.0 = full scale
/// @param detail, guide scratch, at least as large as the half; `detail` receives f(I - u)
/// @param smoother, curve workspaces that no other thread uses at the same time
/// @param detailGain strength: negative values weaken detail, positive values count threefold
/// @param detailGamma above 0 raises fine detail and reduces strong detail; below 0 the reverse
/// @throws `kNoSmootherMemory` when memory for the workspace is exhausted
void enhanceHalf(cv::Mat& half, IMG<float, 1>& detail, IMG<float, 1>& guide,
                 CEdgeSmoother& smoother, CDetailCurve& curve, float detailGain, float detailGamma);

} // namespace vel
