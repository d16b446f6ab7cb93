#pragma once

#include "velimproclib/tiles/TilePlanes.h"
#include "velimproclib/veldeblurcv/deconvolution/ChromaDeconv.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"
#include "velimproclib/veldeblurcv/sharpening/SharpLimit.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Stages 1 and 2 of a call, deconvolution and edge sharpening, with the data that they keep from
/// tile to tile: the transforms of the kernel and the scratch planes. An object serves one call,
/// from the calling thread.
class CDeblurTile {
public:
    /// Returns the tile side for an image, see `tileSideFor`, and stores it in `m_w` and `m_h`.
    int tileSizeFor(cv::Size imageSize);

    /// Sets the limiter for tiles of the chosen size.
    /// @param limitStrength 0 allows overshoot up to four times the local bounds and keeps all of
    /// it, 1 limits the result to the bounds; values below 0.1 bypass the limiter
    /// @param kernelSide larger side of the kernel; the bounds cover a neighbourhood of a third of
    /// it
    void setLimiter(float limitStrength, int kernelSide);

    /// Restores one tile in place.
    /// @param planes luminance and two chroma planes, CV_32FC1 of the tile's size, 1.0 = full scale
    /// @param runDeconv stage 1: deconvolution of all planes, limiter on luminance
    /// @param runEdge stage 2: edge sharpening of luminance
    /// @throws what `CDeconvHL::Proc`, `CChromaDeconv::Proc`, `CSharpLimit::Proc` and
    /// `CSharpenEdge::Proc` throw
    void process(TilePlanes& planes, bool runDeconv, bool runEdge);

    std::int32_t m_w = 1024; ///< tile width in pixels, including the margin
    std::int32_t m_h = 1024;
    CDeconvHL m_deconv;
    CChromaDeconv m_chroma;
    CSharpLimit m_limit;
    float m_edgeRadius = 0.85f;
    float m_edgeSlope = 0.0f;
    float m_edgeGain = 1.0f;
    float m_edgeFloor = 0.005f;
    cv::Mat m_deblurred; ///< deconvolved luminance; also the output of the edge sharpener
    cv::Mat m_chromaTmp; ///< deconvolved chroma plane
    cv::Mat m_luma;      ///< luminance before stage 1

private:
    void restoreLuminance(cv::Mat& luminance);
    void restoreChroma(cv::Mat& chroma);
    void sharpenEdges(cv::Mat& luminance);
};

} // namespace vel
