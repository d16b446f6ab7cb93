#include "velimproclib/veldeblurcv/SharpenEdge.h"

#include "velimproclib/primitives/forEachTask.h"
#include "velimproclib/primitives/LinearFilters.h"
#include "velimproclib/primitives/Morphology.h"
#include "velimproclib/primitives/PlaneArithmetic.h"
#include "velimproclib/primitives/PlaneCopies.h"
#include "velimproclib/veldeblurcv/CopyFrame.h"
#include "velimproclib/veldeblurcv/Gaussian1D.h"
#include "velimproclib/veldeblurcv/InnerRegion.h"

#include <algorithm>

// The planes are worked on in bands of rows, all steps of a band while it is in the cache, and the
// bands are shared out among the threads. Only the smoothing of the contrast reaches into
// neighbouring bands, and so there are two rounds: the first leaves the raw contrast and the edge
// measure, the second does everything else and never writes what another band reads.
//
// A status of a primitive is of no use here: what planes below seven pixels cannot be smoothed
// stays as the frames' copies leave it.

namespace vel {
namespace {

constexpr int kBandRows = 32;
constexpr float kLowestFloor = 1e-5f;
constexpr double kIdentitySigma = 0.4;
constexpr float kLowestCapLeftOut = 99.0f;

template <class T = float>
InnerRegion<T> region(const cv::Mat& plane, int begin, int end, int insetX = 0) {
    return InnerRegion<T>(plane.rowRange(begin, end), insetX, 0);
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
    cv::Mat contrast(in.size(), CV_32FC1);
    cv::Mat mask(in.size(), CV_8UC1);
    Taps baseTaps;
    Taps contrastTaps;
    gaussian1D(baseTaps.data(), kTaps, m_sigma);
    gaussian1D(contrastTaps.data(), kTaps, 2 * m_sigma);

    forEachRowBand(m_h, kBandRows, [&](int begin, int end) {
        measureRows(in, contrast, mask, {begin, end});
    });
    forEachRowBand(m_h, kBandRows, [&](int begin, int end) {
        const Rows rows{begin, end};
        normaliseRows(contrast, contrastTaps, out, rows);
        splitRows(in, baseTaps, out, rows);
        combineRows(out, rows);
    });
    return true;
}

/// The rows that are not in the plane's frame; `end` is not above `begin` when there is none.
CSharpenEdge::Rows CSharpenEdge::without(Rows rows, int frame) const {
    return {std::max(rows.begin, frame), std::min(rows.end, m_h - frame)};
}

void CSharpenEdge::copyFrameRows(const cv::Mat& src, cv::Mat& dst, Rows rows, int frame) const {
    const Rows inner = without(rows, frame);
    cv::Mat dstRows = dst.rowRange(rows.begin, rows.end);
    copyFrame(src.rowRange(rows.begin, rows.end), dstRows, inner.begin - rows.begin,
              rows.end - inner.end, frame, frame);
}

/// Down the columns into `scratch`, leaving out the rows of the frame, and then along all rows into
/// `dst`, leaving out the columns of the frame.
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

/// The local contrast, and as the raw edge measure the smaller of the distance to the local maximum
/// and the plane itself.
void CSharpenEdge::measureRows(const cv::Mat& in, cv::Mat& contrast, cv::Mat& mask, Rows rows) {
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
    const auto raw = region(contrast, rows.begin, rows.end);
    const auto ratio = region(m_ratio, rows.begin, rows.end);
    const auto smaller = region<std::uint8_t>(mask, rows.begin, rows.end);
    const int w = plane.w;
    const int h = plane.h;
    subPlanesF32(low.data, low.step, high.data, high.step, raw.data, raw.step, w, h);
    subPlaneF32(plane.data, plane.step, high.data, high.step, w, h);
    comparePlanesF32(high.data, high.step, plane.data, plane.step, smaller.data, smaller.step, w, h,
                     kLess);
    copyPlaneF32(plane.data, plane.step, ratio.data, ratio.step, w, h);
    copyMaskedF32(high.data, high.step, ratio.data, ratio.step, w, h, smaller.data, smaller.step);
}

/// Divides the edge measure by the smoothed contrast. The contrast itself is left alone, since the
/// neighbouring bands still read it: its smoothed form goes to `m_low`.
void CSharpenEdge::normaliseRows(const cv::Mat& contrast, const Taps& taps, cv::Mat& scratch,
                                 Rows rows) {
    cv::Mat smoothedRows = m_low.rowRange(rows.begin, rows.end);
    copyFrame(contrast.rowRange(rows.begin, rows.end), smoothedRows, 0, 0, kReach, kReach);
    smoothRows(contrast, taps, scratch, m_low, rows);
    const auto smoothed = region(m_low, rows.begin, rows.end);
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
