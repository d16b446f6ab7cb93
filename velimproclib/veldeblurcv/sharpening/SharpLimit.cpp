#include "velimproclib/veldeblurcv/sharpening/SharpLimit.h"

#include "velimproclib/images/copyFrame.h"
#include "velimproclib/images/InnerRegion.h"
#include "velimproclib/images/morphInside.h"
#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/primitives/filters/Medians.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/sharpening/SharpLimit.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef VELORN_SHARP_LIMIT_COMMON
#define VELORN_SHARP_LIMIT_COMMON

namespace vel {
namespace {

struct LimitSettings {
    float upper;
    float lower;
    float mix;
};

struct BoundRows {
    const std::uint8_t* maxDeblur;
    const std::uint8_t* maxSource;
    const std::uint8_t* minDeblur;
    const std::uint8_t* minSource;
};

// One 8-bit level on the scale of the planes, slightly below 1/255.
constexpr float kLevel = 0.003921568393707275f;

} // namespace
} // namespace vel

#endif

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

void limitRow(const BoundRows& bounds, const float* blur, float* HWY_RESTRICT out, std::size_t w,
              const LimitSettings& settings) {
    const std::uint8_t* HWY_RESTRICT maxDeblur = bounds.maxDeblur;
    const std::uint8_t* HWY_RESTRICT maxSource = bounds.maxSource;
    const std::uint8_t* HWY_RESTRICT minDeblur = bounds.minDeblur;
    const std::uint8_t* HWY_RESTRICT minSource = bounds.minSource;
    const LimitSettings set = settings;
    for (std::size_t x = 0; x < w; ++x) {
        const std::uint8_t high8 = maxDeblur[x] > maxSource[x] ? maxDeblur[x] : maxSource[x];
        const std::uint8_t low8 = minDeblur[x] < minSource[x] ? minDeblur[x] : minSource[x];
        const float high = kLevel * static_cast<float>(high8);
        const float low = kLevel * static_cast<float>(low8);
        const float value = blur[x];
        const float belowLow = low + (value - low) * set.mix;
        const float aboveHigh = high + (value - high) * set.mix;
        const float raised = value < low ? belowLow : value;
        const float mixed = value > high ? aboveHigh : raised;
        const float upperLimit = set.upper * high;
        const float lowerLimit = low * set.lower;
        const float cut = mixed > upperLimit ? upperLimit : mixed;
        out[x] = cut < lowerLimit ? lowerLimit : cut;
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(limitRow);

void CSharpLimit::Proc(const cv::Mat& imSource, const cv::Mat& imBlur, cv::Mat& out) {
    if (m_imSize.width < 1 || m_imSize.height < 1 || m_mix >= 0.99f) {
        imBlur.copyTo(out);
        return;
    }
    if (imBlur.type() != CV_32FC1) {
        throw "CSharpLimit::Proc - imBlur.type() != 32FC1";
    }
    if (imBlur.size() != m_imSize) {
        throw "CSharpLimit::Proc - imBlur.size() != m_imSize";
    }
    imBlur.convertTo(m_work8, CV_8U, 255, 0);
    removeSpecks();
    imSource.convertTo(m_work8, CV_8U, 255, 0);
    runInTeam([&] {
        findBounds();
        limitRows(imBlur, out);
    });
}

void CSharpLimit::removeSpecks() {
    m_median8.create(m_work8.size(), CV_8UC1);
    const bool large = m_radius >= 2;
    const int frame = large ? 2 : 1;
    const InnerRegion<std::uint8_t> from(m_work8, frame, frame);
    const InnerRegion<std::uint8_t> to(m_median8, frame, frame);
    medianCrossU8(from.data, from.step, to.data, to.step, to.w, to.h, large ? kMask55 : kMask33);
    copyFrame(m_work8, m_median8, frame, frame, frame, frame);
}

void CSharpLimit::findBounds() {
    struct Bound {
        const cv::Mat& origin;
        cv::Mat& plane;
        MorphInPlace* morph;
        std::int32_t passes;
    };
    const Bound bounds[] = {{m_work8, m_maxSource, dilate3x3InPlaceU8, m_radius},
                            {m_work8, m_minSource, erode3x3InPlaceU8, m_radius},
                            {m_median8, m_maxDeblur, dilate3x3InPlaceU8, m_innerPasses},
                            {m_median8, m_minDeblur, erode3x3InPlaceU8, m_innerPasses}};
    forEachPiece(4, [&](int i, int) {
        const Bound& bound = bounds[i];
        bound.origin.copyTo(bound.plane);
        morphInside(bound.plane, bound.passes, bound.morph);
    });
}

void CSharpLimit::limitRows(const cv::Mat& imBlur, cv::Mat& out) const {
    constexpr int kBandRows = 32;
    const LimitSettings settings{m_upper, m_lower, m_mix};
    const auto columns = static_cast<std::size_t>(imBlur.cols);
    forEachRowBand(imBlur.rows, kBandRows, [&](int begin, int end) {
        for (int y = begin; y < end; ++y) {
            const BoundRows bounds{m_maxDeblur.ptr(y), m_maxSource.ptr(y), m_minDeblur.ptr(y),
                                   m_minSource.ptr(y)};
            HWY_DYNAMIC_DISPATCH(limitRow)
            (bounds, imBlur.ptr<float>(y), out.ptr<float>(y), columns, settings);
        }
    });
}

} // namespace vel
#endif
