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
/// |Dy|^2)). Everything but Y hangs on the kernel alone and becomes one filter in `setup`, K
/// divided by the denominator. Y is multiplied by its conjugate, which differs by rounding from
/// dividing the product of Y and conj(K).
///
/// Planes are CV_32FC1, n by n, n in {256, 512, 1024}. The pieces of the transform are tasks of the
/// caller's team, or of a new one outside of a parallel region (TeamLoop.h). The result does not
/// depend on the number of threads or on the processor. One object serves one caller at a time.
class CChromaDeconv {
public:
    CChromaDeconv() = default;
    CChromaDeconv(const CChromaDeconv&) = delete;
    CChromaDeconv& operator=(const CChromaDeconv&) = delete;

    /// Prepares for `kernel` (CV_32FC1, shared, not copied), centred at (rows/2, cols/2) whatever
    /// `anchor` says. A `size` other than a square of 256, 512 or 1024 is accepted: the transform
    /// has the order that goes with the width, 10 for any other, and planes are cut to its square
    /// or filled up with zeros.
    /// @throws std::bad_alloc; cv::Exception when there is no memory for a matrix
    void setup(const cv::Mat& kernel, cv::Point anchor, cv::Size size, float weight);

    /// Restores `in` into `out`; `in` is only read. Both have the set-up size and are distinct.
    /// Nothing is allocated unless the team has become larger than it could be at `setup`.
    /// @throws std::bad_alloc then; cv::Exception when `out` has another size or type and cannot be
    /// made anew
    void Proc(cv::Mat& in, cv::Mat& out);

    /// The binary logarithm of the transform's side: 10 until `setup`.
    int order() const noexcept { return m_order; }

private:
    bool fillsTransform() const noexcept;
    void forwardRows(const cv::Mat& in);
    void filterBlocks();
    void inverseRows(cv::Mat& out);

    std::int32_t m_order = 10; ///< log2 of the transform's side
    float m_weight = 0.0f;
    cv::Size m_imSize;
    cv::Mat m_kernel;
    std::int32_t m_w = 0;
    std::int32_t m_h = 0;

    std::unique_ptr<RealFft2D> m_fft;
    AlignedFloats m_filter; ///< K / (|K|^2 + weight (|Dx|^2 + |Dy|^2)), conjugated on use
    AlignedFloats m_spectrum;
    ThreadScratch m_scratch;
};

} // namespace vel
