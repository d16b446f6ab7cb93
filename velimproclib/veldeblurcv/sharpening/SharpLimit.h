#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Takes back the overshoot of a deconvolved plane.
///
/// Every pixel gets soft bounds, the extremes that the deconvolved plane (after removing specks)
/// and the plane before deconvolution reach in its neighbourhood. What lies beyond them is
/// compressed, and the result is cut to a wider pair of bounds. Planes are CV_32FC1, 1.0 = full
/// scale; the bounds are found on 8-bit copies and so stand in steps of 1/255.
///
/// The caller writes the settings. One object serves one caller at a time and keeps its scratch
/// planes from call to call. `Proc` spreads over the team of the region that it is called in, or
/// opens a region of its own outside of any; the result does not depend on the number of threads.
class CSharpLimit {
public:
    virtual ~CSharpLimit() = default;

    /// Limits `imBlur`, the deconvolved plane, by itself and `imSource`, the plane before
    /// deconvolution, both of size `m_imSize`, into `out`, which already has that size and type.
    /// With `m_imSize` empty or `m_mix` of 0.99 or more, `out` becomes a copy of `imBlur` and
    /// nothing is checked. A NaN of `imBlur` stays one.
    /// @throws const char* "CSharpLimit::Proc - imBlur.type() != 32FC1" or
    /// "CSharpLimit::Proc - imBlur.size() != m_imSize"; cv::Exception when there is no memory for a
    /// scratch plane. `out` is then as it was.
    void Proc(const cv::Mat& imSource, const cv::Mat& imBlur, cv::Mat& out);

    cv::Size m_imSize;              ///< size that the planes must have
    std::int32_t m_innerPasses = 0; ///< 3 by 3 passes on the deconvolved plane, usually 1
    std::int32_t m_radius = 0; ///< 3 by 3 passes on the plane before deconvolution, 1..5; from 2
                               ///< on the specks are removed with the larger median
    float m_upper = 0;         ///< multiplies the upper bound, at least 1
    float m_lower = 0;         ///< multiplies the lower bound, the inverse of `m_upper`
    float m_mix = 0;           ///< share kept of what exceeds the soft bounds, 0..1

    cv::Mat m_maxDeblur; ///< 8-bit: dilated median of the deconvolved plane
    cv::Mat m_minDeblur; ///< 8-bit: eroded median of the deconvolved plane
    cv::Mat m_maxSource; ///< 8-bit: dilated plane before deconvolution
    cv::Mat m_minSource; ///< 8-bit: eroded plane before deconvolution
    cv::Mat m_work8;     ///< 8-bit copy of the current input
    cv::Mat m_median8;   ///< 8-bit: median of the deconvolved plane

private:
    void removeSpecks();
    void findBounds();
    void limitRows(const cv::Mat& imBlur, cv::Mat& out) const;
};

} // namespace vel
