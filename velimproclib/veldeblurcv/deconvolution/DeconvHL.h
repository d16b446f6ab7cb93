#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"
#include "velimproclib/veldeblurcv/deconvolution/ThreadScratch.h"
#include "velimproclib/veldeblurcv/shrinkage/BuiltShrinkTable.h"

#include <cstdint>
#include <memory>

#include <opencv2/core.hpp>

namespace vel {

/// Restores one square plane from a known blur under a hyper-Laplacian prior on its gradients: for
/// the observed plane y, kernel k, weight lambda and exponent alpha the plane x that minimises
///
///     (lambda / 2) |k * x - y|^2 + sum over pixels of (|gx|^alpha + |gy|^alpha).
///
/// Half-quadratic splitting replaces the gradients in the prior by planes wx and wy, tied to the
/// gradients by (beta / 2)(|gx - wx|^2 + |gy - wy|^2). Each pass takes one beta of the schedule
/// (betaSchedule.h) and solves first for w, a table lookup per pixel, then for x, a division per
/// frequency. Every image takes the same six passes. Flat pictures are nevertheless faster, by a
/// factor of up to about 1.7 (measured at 512, alpha 0.8), because a vector of gradients that all
/// lie in the dead zone needs no lookup. The method is that of D. Krishnan and R. Fergus, Fast
/// image deconvolution using hyper-Laplacian priors, 2009.
///
/// The data term is circular, but the prior does not see the step across the plane's seam: the
/// gradients of the last column and row are 0, and the transposed differences leave out the
/// horizontal term of the first column and the vertical term of the first row.
///
/// Planes are CV_32FC1, n by n, n in {256, 512, 1024}, 1.0 = full scale.
///
/// How the data moves. A pass walks over memory three times. By groups of 16 rows: gradients,
/// shrinkage and transposed differences go through a few lines of scratch directly into the forward
/// row transform. By blocks of 16 columns: forward column transform, division and inverse column
/// transform, while the block is in the cache. By groups of rows: inverse row transform into the
/// result. Therefore the gradients, the shrunk gradients, their adjoint, the magnitudes of the
/// difference filters, the denominator and the quotient are never stored as planes, and spectra are
/// half spectra.
///
/// `setup` allocates all scratch. The groups and blocks are tasks of the caller's team, or of a new
/// one outside of a parallel region (TeamLoop.h). The result does not depend on the number of
/// threads or on the processor. An object serves one caller at a time.
class CDeconvHL {
public:
    CDeconvHL() = default;
    CDeconvHL(const CDeconvHL&) = delete;
    CDeconvHL& operator=(const CDeconvHL&) = delete;

    /// Prepares for `kernel` (CV_32FC1, shared, not copied). The kernel is smaller than the plane
    /// and has sum 1; any other sum scales the result, and a larger kernel wraps round the plane.
    /// Its centre is (rows/2, cols/2), whatever `anchor` says. `alpha` is cut to 0..1. `useStored`
    /// selects the stored shrink table; otherwise a table for the exact alpha is built, which is
    /// slow and which no export selects.
    /// @throws const char* when `size` is not a square of 256, 512 or 1024; std::bad_alloc;
    /// cv::Exception when memory for a matrix is exhausted
    void setup(const cv::Mat& kernel, cv::Point anchor, cv::Size size, float lambda, float alpha,
               bool useStored);

    /// Restores `in` into `out`. Both have the set-up size and share no pixel; `in` is only read.
    /// Allocates only when the team has become larger than it could be at `setup`.
    /// @throws std::bad_alloc then; cv::Exception when `out` has another size or type and cannot be
    /// reallocated
    void Proc(cv::Mat& in, cv::Mat& out);

private:
    void setSize(cv::Size size);
    void prepareKernel();
    void makeNumerator(const cv::Mat& in);
    void runPass(const cv::Mat& estimate, cv::Mat& out);
    template <class Shrink>
    void transformAdjoint(const cv::Mat& estimate, const Shrink& shrinkDifferences);
    void divideBlocks(float gamma);

    double m_beta = 0.0;  ///< penalty weight of the current pass
    double m_alpha = 0.0; ///< in 0..1 after `setup`
    double m_lambda = 0.0;
    std::int32_t m_newtonIters = 4; ///< of the built table, which no export selects
    cv::Size m_imSize;
    cv::Mat m_kernel;
    std::int32_t m_w = 0;
    std::int32_t m_h = 0;
    std::int32_t m_order = 0; ///< log2 of the side
    bool m_useStored = true;

    std::unique_ptr<RealFft2D> m_fft;
    AlignedFloats m_kernelSpectrum;
    SpectralQuotient m_quotient;
    AlignedFloats m_numerator; ///< conj(K) Y of the current plane
    AlignedFloats m_spectrum;  ///< of the adjoint, then of the estimate
    BuiltShrinkTable m_lut;    ///< empty in stored mode, the only one that exports select
    ThreadScratch m_scratch;
};

} // namespace vel
