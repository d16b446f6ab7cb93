#pragma once

#include "velimproclib/images/Image.h"
#include "velimproclib/veldeblurcv/detail/DetailCurve.h"
#include "velimproclib/veldeblurcv/detail/EdgeSmoother.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Stage 3 of a call, detail enhancement of the luminance, with the workspaces and scratch images
/// that it keeps from tile to tile. It cuts the luminance of a tile into two overlapping halves,
/// enhances both halves in parallel and merges them. An object serves one call, from the calling
/// thread.
class CDetailStage {
public:
    /// Allocates the scratch images for tiles of that size, even when the stage never runs.
    /// @throws `kNoPixels` when memory is exhausted
    CDetailStage(std::int32_t tileWidth, std::int32_t tileHeight);

    /// Enhances the detail of one tile in place.
    /// @param luminance CV_32FC1 of the tile's size, 1.0 = full scale
    /// @param detailGain, detailGamma see `enhanceHalf`
    /// @throws `kNoSmootherMemory` when memory for the workspaces is exhausted
    void Proc(cv::Mat& luminance, float detailGain, float detailGamma);

private:
    /// Everything that one section works on; the sections share nothing.
    struct Half {
        Half(std::int32_t width, std::int32_t height)
            : detail(width, height), guide(width, height) {}

        cv::Mat pixels;
        IMG<float, 1> detail;
        IMG<float, 1> guide;
        CEdgeSmoother smoother;
        CDetailCurve curve;
    };

    Half m_top;
    Half m_bottom;
};

} // namespace vel
