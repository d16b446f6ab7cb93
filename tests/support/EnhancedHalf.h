#pragma once

#include "velimproclib/veldeblurcv/detail/enhanceHalf.h"

#include <opencv2/core.hpp>

namespace vel::test {

/// The result of `enhanceHalf` for `half` with new workspaces. The scratch images are larger than
/// the half by `scratchMargin` columns and rows.
inline cv::Mat enhancedHalf(const cv::Mat& half, float gain, float gamma, int scratchMargin = 0) {
    cv::Mat result = half.clone();
    IMG<float, 1> detail(half.cols + scratchMargin, half.rows + scratchMargin);
    IMG<float, 1> guide(half.cols + scratchMargin, half.rows + scratchMargin);
    CEdgeSmoother smoother;
    CDetailCurve curve;
    enhanceHalf(result, detail, guide, smoother, curve, gain, gamma);
    return result;
}

} // namespace vel::test
