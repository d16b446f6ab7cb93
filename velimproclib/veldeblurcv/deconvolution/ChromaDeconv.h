#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"
#include "velimproclib/veldeblurcv/deconvolution/ThreadScratch.h"

#include <cstdint>
#include <memory>

#include <opencv2/core.hpp>

namespace vel {

/// Restores a square chroma plane from a known blur under a quadratic prior: the plane x that
/// minimises
///
///     |k * x - y|^2 + weight (|gx|^2 + |gy|^2)
///
/// on the circle, in closed form and in a single pass: X = conj(K) Y / (|K|^2 + weight (|Dx|^2 +
/// |Dy|^2)). Everything except Y depends on the kernel alone, therefore `setup` computes one
/// filter, K divided by the denominator, and `Proc` multiplies Y by its conjugate. This differs by
/// rounding from a division of the product of Y and conj(K).
///
/// Planes are CV_32FC1, n by n, n in {256, 512, 1024}. The pieces of the transform are tasks of the
/// caller's team, or of a new one outside of a parallel region (TeamLoop.h). The result does not
/// depend on the number of threads or on the processor. An object serves one caller at a time.
class CChromaDeconv {
public:
    CChromaDeconv() = default;
    CChromaDeconv(const CChromaDeconv&) = delete;
    CChromaDeconv& operator=(const CChromaDeconv&) = delete;

    /// Prepares for `kernel` (CV_32FC1, shared, not copied), centred at (rows/2, cols/2) whatever
    /// `anchor` says. `size` is a square of 256, 512 or 1024. Any other size is accepted and gives
    /// a transform of side 1024.
    /// @throws std::bad_alloc; cv::Exception when memory for a matrix is exhausted
    void setup(const cv::Mat& kernel, cv::Point anchor, cv::Size size, float weight);

    /// Restores `in` into `out`. Both have the side of the transform and share no pixel; `in` is
    /// only read. Allocates only when the team has become larger than it could be at `setup`.
    /// @throws std::bad_alloc then; cv::Exception when `out` has another size or type and cannot be
    /// reallocated
    void Proc(cv::Mat& in, cv::Mat& out);

private:
    void makeFilter();

    std::int32_t m_order = 10; ///< log2 of the transform's side
    float m_weight = 0.0f;
    cv::Size m_imSize;
    cv::Mat m_kernel;
    std::int32_t m_w = 0;
    std::int32_t m_h = 0;

    std::unique_ptr<RealFft2D> m_fft;
    AlignedFloats m_filter;   ///< K / (|K|^2 + weight (|Dx|^2 + |Dy|^2)), conjugated by `Proc`
    AlignedFloats m_spectrum; ///< of the kernel during `setup`, then of the current plane
    ThreadScratch m_scratch;
};

} // namespace vel
