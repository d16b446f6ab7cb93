#include "velimproclib/veldeblurcv/DeblurTile.h"

#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/primitives/base/truncate.h"
#include "velimproclib/tiles/tileSide.h"
#include "velimproclib/veldeblurcv/sharpening/SharpenEdge.h"

#include <algorithm>

namespace vel {

namespace {

/// Creates a plane of zeros when `plane` has another size: on the first tile the edge sharpener
/// reads rows of its output plane before anything has written them. Otherwise the plane keeps the
/// content of the previous tile.
void createPlane(cv::Mat& plane, cv::Size size) {
    if (plane.size() != size || plane.type() != CV_32FC1) {
        plane = cv::Mat::zeros(size, CV_32FC1);
    }
}

} // namespace

int CDeblurTile::tileSizeFor(cv::Size imageSize) {
    m_w = m_h = tileSideFor(imageSize.width, imageSize.height);
    return m_w;
}

void CDeblurTile::setLimiter(float limitStrength, int kernelSide) {
    const double strength = limitStrength;
    const double upper = (1.0 - strength) * 3.0 + 1.0;
    m_limit.m_imSize = cv::Size(m_w, m_h);
    m_limit.m_innerPasses = 1;
    m_limit.m_radius = std::clamp(truncateToInt((kernelSide + 0.8) / 3.0), 1, 5);
    m_limit.m_upper = toFloat(upper);
    m_limit.m_lower = toFloat(1.0 / upper);
    // A share of 1 bypasses the limiter.
    m_limit.m_mix = strength < 0.1 ? 1.0f : toFloat(1.0 - strength);
}

void CDeblurTile::process(TilePlanes& planes, bool runDeconv, bool runEdge) {
    const cv::Size size = planes[0].size();
    createPlane(m_deblurred, size);
    createPlane(m_chromaTmp, size);
    createPlane(m_luma, size);

    if (runDeconv) {
        runSideBySide([&] { restoreLuminance(planes[0]); },
                      [&] {
                          restoreChroma(planes[1]);
                          restoreChroma(planes[2]);
                      });
    }
    if (runEdge) {
        sharpenEdges(planes[0]);
    }
}

void CDeblurTile::restoreLuminance(cv::Mat& luminance) {
    luminance.copyTo(m_luma);
    m_deconv.Proc(luminance, m_deblurred);
    m_limit.Proc(m_luma, m_deblurred, luminance);
}

void CDeblurTile::restoreChroma(cv::Mat& chroma) {
    m_chroma.Proc(chroma, m_chromaTmp);
    m_chromaTmp.copyTo(chroma);
}

void CDeblurTile::sharpenEdges(cv::Mat& luminance) {
    CSharpenEdge sharpener(m_edgeRadius, m_edgeFloor);
    sharpener.m_slope = m_edgeSlope;
    sharpener.m_gain = m_edgeGain;
    sharpener.Proc(luminance, m_deblurred);
    m_deblurred.copyTo(luminance);
}

} // namespace vel
