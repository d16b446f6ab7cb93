#include "velimproclib/veldeblurcv/detail/enhanceHalf.h"

#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/pixels/PlaneCopies.h"

#include <cstdint>

namespace vel {

namespace {

constexpr float kSmoothing = 0.05f;
constexpr float kSmoothingExponent = 1.2f; // the smoother truncates it to 1
constexpr bool kLogGuide = true;
constexpr int kIterations = 20;
constexpr float kKnee = 0.18f;
constexpr float kLowestDetail = -0.5f;
constexpr float kHighestDetail = 0.5f;
constexpr float kBoost = 3.0f;

void copyImage(const GIMG<float>& src, GIMG<float>& dst) {
    dst.m_status =
        copyPlaneF32(src.pixels(), src.m_step, dst.pixels(), dst.m_step, dst.m_roiW, dst.m_roiH);
}

} // namespace

void enhanceHalf(cv::Mat& half, IMG<float, 1>& detail, IMG<float, 1>& guide,
                 CEdgeSmoother& smoother, CDetailCurve& curve, float detailGain,
                 float detailGamma) {
    GIMG<float> p(half.cols, half.rows, half.data, static_cast<std::int32_t>(half.step));
    GIMG<float> d(half.cols, half.rows, detail.m_data, detail.m_step);
    GIMG<float> g(half.cols, half.rows, guide.m_data, guide.m_step);
    copyImage(p, d);
    copyImage(p, g);
    smoother.smooth(d, p, g, kSmoothing, kSmoothingExponent, kLogGuide, kIterations);
    d.m_status = subPlaneF32(p.pixels(), p.m_step, d.pixels(), d.m_step, d.m_roiW, d.m_roiH);
    curve.apply(d, detailGamma, detailGain, kKnee, kLowestDetail, kHighestDetail, kBoost);
    p.m_status = addPlaneF32(d.pixels(), d.m_step, p.pixels(), p.m_step, p.m_roiW, p.m_roiH);
}

} // namespace vel
