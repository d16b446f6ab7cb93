#pragma once

#include "velimproclib/images/Image.h"
#include "velimproclib/veldeblurcv/detail/DetailCurve.h"
#include "velimproclib/veldeblurcv/detail/EdgeSmoother.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Stage 3 of a call, with the workspaces and scratch images that it keeps from tile to tile. A
/// tile's luminance is cut into two overlapping halves that are enhanced at once and joined again.
/// One object serves one call, from the calling thread.
class CDetailStage {
public:
    /// Allocates the scratch images for tiles of that size, also for a stage that never runs.
    /// @throws `kNoPixels` when there is no memory
    CDetailStage(std::int32_t tileWidth, std::int32_t tileHeight);

    /// Enhances the detail of one tile in place.
    /// @param luminance CV_32FC1 of the tile's size, 1.0 = full scale
    /// @param detailGain, detailGamma see `enhanceHalf`
    /// @throws `kNoSmootherMemory` when there is no memory for the workspaces
    void Proc(cv::Mat& luminance, float detailGain, float detailGamma);

private:
    /// What one section works with.
    struct Half {
        Half(std::int32_t width, std::int32_t height)
            : detail(width, height), guide(width, height) {}

        cv::Mat pixels;
        IMG<float, 1> detail;
        IMG<float, 1> guide;
        CEdgeSmoother smoother;
    };

    Half m_top;
    Half m_bottom;
    CDetailCurve m_curve;
};

} // namespace vel
