#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Limits the overshoot of a deconvolved plane.
///
/// Every pixel gets soft bounds: the extremes that the deconvolved plane, without specks, and the
/// plane before deconvolution reach in its neighbourhood. Values outside the soft bounds are
/// compressed, then cut to a wider pair of bounds. Planes are CV_32FC1, 1.0 = full scale; the
/// bounds come from 8-bit copies and are multiples of 1/255.
///
/// The caller writes the settings. An object serves one caller at a time and keeps its scratch
/// planes from call to call. `Proc` runs on the team of the region that calls it, or opens a region
/// outside of any; the result does not depend on the number of threads.
class CSharpLimit {
public:
    virtual ~CSharpLimit() = default;

    /// Limits `imBlur`, the deconvolved plane, to the bounds that it and `imSource`, the plane
    /// before deconvolution, give. All planes have the size `m_imSize`; `out` has that size and
    /// type before the call and must not share a pixel with the other two.
    ///
    /// With an empty `m_imSize` or an `m_mix` of 0.99 or more, `out` becomes a copy of `imBlur` and
    /// nothing is checked. A NaN of `imBlur` stays a NaN.
    /// @throws const char* "CSharpLimit::Proc - imBlur.type() != 32FC1" or
    /// "CSharpLimit::Proc - imBlur.size() != m_imSize"; cv::Exception or std::bad_alloc when memory
    /// is exhausted. `out` is then unchanged.
    void Proc(const cv::Mat& imSource, const cv::Mat& imBlur, cv::Mat& out);

    cv::Size m_imSize;              ///< size that the planes must have
    std::int32_t m_innerPasses = 0; ///< 3 by 3 passes on the deconvolved plane, usually 1
    std::int32_t m_radius = 0; ///< 3 by 3 passes on the plane before deconvolution, 1..5; 2 and
                               ///< more select the larger median for the specks
    float m_upper = 0;         ///< multiplies the upper bound, at least 1
    float m_lower = 0;         ///< multiplies the lower bound, the inverse of `m_upper`
    float m_mix = 0;           ///< share that is kept of the excess over the soft bounds, 0..1

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
