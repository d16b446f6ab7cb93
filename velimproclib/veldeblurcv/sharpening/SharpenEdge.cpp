#include "velimproclib/veldeblurcv/sharpening/SharpenEdge.h"

#include "velimproclib/images/copyFrame.h"
#include "velimproclib/images/InnerRegion.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/primitives/filters/LinearFilters.h"
#include "velimproclib/primitives/filters/Morphology.h"
#include "velimproclib/primitives/pixels/PlaneCopies.h"
#include "velimproclib/veldeblurcv/kernels/gaussian1D.h"

#include <algorithm>
#include <array>
#include <cstdint>

// The planes are processed in bands of rows, all steps of a band while it is in the cache, and the
// threads share the bands. A filter down the columns reads rows of the neighbouring bands,
// therefore there are three rounds. In no round does a band write what another band reads:
//
//     measure     m_low: contrast   m_high: distance to the maximum   m_ratio: raw edge measure
//     normalise                     m_high: smoothed contrast         m_ratio: edge measure
//     sharpen     m_low: base       m_high: detail                    out: result
//
// The driver makes a new object for every tile: three planes instead of more save memory that the
// system would have to supply each time.
//
// The status of the primitives is ignored on purpose: they refuse regions without pixels, which
// leaves out the smoothing of planes below seven pixels, and warn of divisions by zero.

namespace vel {
namespace {

constexpr int kBandRows = 32;
constexpr float kLowestFloor = 1e-5f;
constexpr double kIdentitySigma = 0.4;
constexpr float kLowestCapLeftOut = 99.0f;

InnerRegion<float> region(const cv::Mat& plane, int begin, int end, int insetX = 0) {
    return InnerRegion<float>(plane.rowRange(begin, end), insetX, 0);
}

/// `dst = a` where `a < b`, else `b`, in a band of rows.
void copySmaller(const InnerRegion<float>& a, const InnerRegion<float>& b,
                 const InnerRegion<float>& dst) {
    constexpr int kColumns = 512;
    std::array<std::uint8_t, kColumns * kBandRows> mask;
    copyPlaneF32(b.data, b.step, dst.data, dst.step, b.w, b.h);
    for (int x = 0; x < a.w; x += kColumns) {
        const int w = std::min(kColumns, a.w - x);
        comparePlanesF32(a.data + x, a.step, b.data + x, b.step, mask.data(), kColumns, w, a.h,
                         kLess);
        copyMaskedF32(a.data + x, a.step, dst.data + x, dst.step, w, a.h, mask.data(), kColumns);
    }
}

} // namespace

CSharpenEdge::CSharpenEdge(float sigma, float floor)
    : m_sigma(sigma), m_floor(floor < kLowestFloor ? kLowestFloor : floor) {}

bool CSharpenEdge::Proc(cv::Mat& in, cv::Mat& out) {
    if (in.type() != CV_32FC1) {
        throw "CSharpenEdge::Proc - in.type() != 32FC1";
    }
    m_w = in.cols;
    m_h = in.rows;
    m_low.create(in.size(), CV_32FC1);
    m_high.create(in.size(), CV_32FC1);
    m_ratio.create(in.size(), CV_32FC1);
    Taps baseTaps;
    Taps contrastTaps;
    gaussian1D(baseTaps.data(), kTaps, m_sigma);
    gaussian1D(contrastTaps.data(), kTaps, 2 * m_sigma);

    runInTeam([&] {
        forEachRowBand(m_h, kBandRows, [&](int begin, int end) { measureRows(in, {begin, end}); });
        forEachRowBand(m_h, kBandRows, [&](int begin, int end) {
            normaliseRows(contrastTaps, out, {begin, end});
        });
        forEachRowBand(m_h, kBandRows, [&](int begin, int end) {
            splitRows(in, baseTaps, out, {begin, end});
            combineRows(out, {begin, end});
        });
    });
    return true;
}

/// The part of `rows` outside of the plane's frame; empty when `end` is not above `begin`.
CSharpenEdge::Rows CSharpenEdge::without(Rows rows, int frame) const {
    return {std::max(rows.begin, frame), std::min(rows.end, m_h - frame)};
}

void CSharpenEdge::copyFrameRows(const cv::Mat& src, cv::Mat& dst, Rows rows, int frame) const {
    const Rows inner = without(rows, frame);
    cv::Mat dstRows = dst.rowRange(rows.begin, rows.end);
    copyFrame(src.rowRange(rows.begin, rows.end), dstRows, inner.begin - rows.begin,
              rows.end - inner.end, frame, frame);
}

/// Filters down the columns of `src` into `scratch`, without the rows of the frame, then along the
/// rows of `scratch` into `dst`, without the columns of the frame.
void CSharpenEdge::smoothRows(const cv::Mat& src, const Taps& taps, cv::Mat& scratch, cv::Mat& dst,
                              Rows rows) const {
    const Rows inner = without(rows, kReach);
    if (inner.begin < inner.end) {
        const auto from = region(src, inner.begin, inner.end);
        const auto to = region(scratch, inner.begin, inner.end);
        filterColumnF32(from.data, from.step, to.data, to.step, to.w, to.h, taps.data(), kTaps,
                        kReach);
    }
    const auto from = region(scratch, rows.begin, rows.end, kReach);
    const auto to = region(dst, rows.begin, rows.end, kReach);
    filterRowF32(from.data, from.step, to.data, to.step, to.w, to.h, taps.data(), kTaps, kReach);
}

/// Computes the local contrast and the raw edge measure: the smaller of the distance to the local
/// maximum and the plane itself.
void CSharpenEdge::measureRows(const cv::Mat& in, Rows rows) {
    const Rows inner = without(rows, 1);
    if (inner.begin < inner.end) {
        const auto from = region(in, inner.begin, inner.end, 1);
        const auto high = region(m_high, inner.begin, inner.end, 1);
        const auto low = region(m_low, inner.begin, inner.end, 1);
        dilate3x3F32(from.data, from.step, high.data, high.step, from.w, from.h);
        erode3x3F32(from.data, from.step, low.data, low.step, from.w, from.h);
    }
    copyFrameRows(in, m_high, rows, 1);
    copyFrameRows(in, m_low, rows, 1);

    const auto plane = region(in, rows.begin, rows.end);
    const auto high = region(m_high, rows.begin, rows.end);
    const auto low = region(m_low, rows.begin, rows.end);
    subPlanesF32(low.data, low.step, high.data, high.step, low.data, low.step, low.w, low.h);
    subPlaneF32(plane.data, plane.step, high.data, high.step, high.w, high.h);
    copySmaller(high, plane, region(m_ratio, rows.begin, rows.end));
}

/// Divides the edge measure by the smoothed contrast.
void CSharpenEdge::normaliseRows(const Taps& taps, cv::Mat& scratch, Rows rows) {
    cv::Mat smoothedRows = m_high.rowRange(rows.begin, rows.end);
    copyFrame(m_low.rowRange(rows.begin, rows.end), smoothedRows, 0, 0, kReach, kReach);
    smoothRows(m_low, taps, scratch, m_high, rows);
    const auto smoothed = region(m_high, rows.begin, rows.end);
    const auto ratio = region(m_ratio, rows.begin, rows.end);
    addConstInPlaceF32(m_floor, smoothed.data, smoothed.step, smoothed.w, smoothed.h);
    divPlaneInPlaceF32(smoothed.data, smoothed.step, ratio.data, ratio.step, ratio.w, ratio.h);
}

/// Splits the plane into the base layer `m_low` and the detail layer `m_high`.
void CSharpenEdge::splitRows(const cv::Mat& in, const Taps& taps, cv::Mat& scratch, Rows rows) {
    const auto plane = region(in, rows.begin, rows.end);
    const auto low = region(m_low, rows.begin, rows.end);
    const auto high = region(m_high, rows.begin, rows.end);
    if (m_sigma > kIdentitySigma) {
        smoothRows(in, taps, scratch, m_low, rows);
        copyFrameRows(in, m_low, rows, kReach);
        subPlanesF32(low.data, low.step, plane.data, plane.step, high.data, high.step, plane.w,
                     plane.h);
    } else {
        copyPlaneF32(plane.data, plane.step, low.data, low.step, plane.w, plane.h);
        setPlaneF32(0.0f, high.data, high.step, high.w, high.h);
    }
}

void CSharpenEdge::combineRows(cv::Mat& out, Rows rows) const {
    const auto ratio = region(m_ratio, rows.begin, rows.end);
    const auto high = region(m_high, rows.begin, rows.end);
    const auto low = region(m_low, rows.begin, rows.end);
    const auto to = region(out, rows.begin, rows.end);
    mulConstF32(ratio.data, ratio.step, m_slope, to.data, to.step, to.w, to.h);
    if (m_maxGain < kLowestCapLeftOut) {
        clampAboveInPlaceF32(to.data, to.step, to.w, to.h, m_maxGain);
    }
    addConstInPlaceF32(m_gain, to.data, to.step, to.w, to.h);
    mulPlaneF32(high.data, high.step, to.data, to.step, to.w, to.h);
    addPlaneF32(low.data, low.step, to.data, to.step, to.w, to.h);
}

} // namespace vel
