#pragma once

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Sharpens the edges of a plane: an unsharp mask whose gain varies from pixel to pixel.
///
/// With B the plane smoothed by a Gaussian of `m_sigma`, M and m the local maximum and minimum over
/// 3 by 3 pixels and C the contrast M - m smoothed by a Gaussian of twice `m_sigma`, the result is
///
///     B + (I - B)*(m_gain + m_slope*min(M - I, I)/(C + m_floor))
///
/// The second operand of the minimum is the plane itself: the measure vanishes on flat areas and on
/// local maxima, and in dark areas the brightness bounds it. Both Gaussians have seven taps for any
/// `m_sigma`. With `m_sigma` of 0.4 or less the result is the plane itself.
///
/// Planes are CV_32FC1, 1.0 = full scale. An object serves one tile: construct, assign `m_slope`
/// and `m_gain`, call `Proc` once. It serves one caller at a time. `Proc` runs on the team of the
/// region that calls it, or opens a region outside of any; the result does not depend on the number
/// of threads.
class CSharpenEdge {
public:
    /// @param sigma standard deviation of the base layer in pixels; 0 and NaN give NaN pixels
    /// @param floor added to the contrast before the division; raised to 1e-5 when below
    CSharpenEdge(float sigma, float floor);
    virtual ~CSharpenEdge() = default;

    /// Sharpens `in` into `out`, which has the size of `in` before the call and shares no pixel
    /// with it.
    ///
    /// `out` also serves as scratch. In its top and bottom three rows the contrast is smoothed
    /// along rows only, and it is not the contrast of `in` but the content of `out` before the
    /// call. These rows lie in the margin of a tile and never reach the host's image. With
    /// `m_sigma` above 0.4 the outermost three rows and columns of the result are those of `in`.
    /// @return always true
    /// @throws const char* "CSharpenEdge::Proc - in.type() != 32FC1"; cv::Exception when memory for
    /// a scratch plane is exhausted
    bool Proc(cv::Mat& in, cv::Mat& out);

    float m_sigma;          ///< standard deviation of the base layer in pixels
    float m_floor;          ///< added to the contrast; at least 1e-5
    float m_slope = 0;      ///< how fast the gain grows with the edge measure
    float m_maxGain = 1000; ///< cap of the slope's part of the gain when below 99
    float m_gain = 1;       ///< gain where the edge measure is 0
    std::int32_t m_w = 0;   ///< plane size, set by `Proc`
    std::int32_t m_h = 0;
    cv::Mat m_low;   ///< local minimum, then contrast, finally base layer
    cv::Mat m_high;  ///< local maximum, then distance to it, finally detail layer
    cv::Mat m_ratio; ///< edge measure

private:
    static constexpr int kTaps = 7;
    static constexpr int kReach = kTaps / 2;
    using Taps = std::array<float, kTaps>;

    struct Rows {
        int begin;
        int end;
    };

    Rows without(Rows rows, int frame) const;
    void copyFrameRows(const cv::Mat& src, cv::Mat& dst, Rows rows, int frame) const;
    void smoothRows(const cv::Mat& src, const Taps& taps, cv::Mat& scratch, cv::Mat& dst,
                    Rows rows) const;
    void measureRows(const cv::Mat& in, Rows rows);
    void normaliseRows(const Taps& taps, cv::Mat& scratch, Rows rows);
    void splitRows(const cv::Mat& in, const Taps& taps, cv::Mat& scratch, Rows rows);
    void combineRows(cv::Mat& out, Rows rows) const;
};

} // namespace vel
