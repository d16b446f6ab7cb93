#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"
#include "velimproclib/veldeblurcv/deconvolution/ThreadScratch.h"
#include "velimproclib/veldeblurcv/shrinkage/BuiltShrinkTable.h"

#include <cstdint>
#include <memory>
#include <numbers>

#include <opencv2/core.hpp>

namespace vel {

/// Restores one square plane from a known blur under a hyper-Laplacian prior on its gradients: for
/// the observed plane y, kernel k, weight lambda and exponent alpha the plane x that minimises
///
///     (lambda / 2) |k * x - y|^2 + sum over pixels of (|gx|^alpha + |gy|^alpha).
///
/// Half-quadratic splitting puts planes wx, wy in the place of the gradients, tied to them by
/// (beta / 2)(|gx - wx|^2 + |gy - wy|^2). Six passes with beta = (2 sqrt 2)^0 .. (2 sqrt 2)^5 solve
/// in turn for w, a table lookup per pixel, and for x, a division per frequency. There is no other
/// stopping rule: every image takes the same passes. Flat pictures are faster all the same, by a
/// factor of up to about 1.7 (measured at 512, alpha 0.8), as vectors of gradients that all lie in
/// the dead zone are not looked up. The method is that of D. Krishnan and R. Fergus, Fast image
/// deconvolution using hyper-Laplacian priors, 2009.
///
/// The data term is circular, but the prior does not see the step across the plane's seam: the
/// gradients of the last column and row are 0, and in the transposed differences the first column
/// and row are cleared.
///
/// Planes are CV_32FC1, n by n, n in {256, 512, 1024}, 1.0 = full scale.
///
/// How the data moves. A pass walks over memory three times. By groups of 16 rows: gradients,
/// shrink and transposed differences run through a few lines of scratch straight into the forward
/// row transform. By blocks of 16 columns: forward column transform, division and inverse column
/// transform, while the block is in the cache. By groups of rows: inverse row transform into the
/// result. The gradients, the shrunk gradients, their adjoint, the magnitudes of the difference
/// filters, the denominator and the quotient are so never stored as planes, and spectra are half
/// spectra.
///
/// All scratch is made in `setup`. The groups and blocks are tasks of the caller's team, or of a
/// new one outside of a parallel region (TeamLoop.h). The result does not depend on the number of
/// threads or on the processor. One object serves one caller at a time.
class CDeconvHL {
public:
    CDeconvHL() = default;
    CDeconvHL(const CDeconvHL&) = delete;
    CDeconvHL& operator=(const CDeconvHL&) = delete;

    /// Prepares for `kernel` (CV_32FC1, shared, not copied; smaller than the plane, with sum 1: any
    /// other sum scales the result, and a larger kernel is wrapped round the plane). Its centre is
    /// (rows/2, cols/2), whatever `anchor` says. `alpha` is cut to 0..1. `useStored` takes the
    /// stored shrink table; otherwise one is built for the exact alpha, which takes a while.
    /// @throws const char* when `size` is not a square of 256, 512 or 1024; std::bad_alloc;
    /// cv::Exception when there is no memory for a matrix
    void setup(const cv::Mat& kernel, cv::Point anchor, cv::Size size, float lambda, float alpha,
               bool useStored);

    /// Restores `in` into `out`; `in` is only read. Both have the set-up size and are distinct.
    /// Nothing is allocated unless the team has become larger than it could be at `setup`.
    /// @throws std::bad_alloc then; cv::Exception when `out` has another size or type and cannot be
    /// made anew
    void Proc(cv::Mat& in, cv::Mat& out);

    /// w = shrink(v) at the current beta for whole planes of the set-up size. With the stored table
    /// `v` is clamped in place to the range of the table. `Proc` looks up line by line instead
    /// (`shrinkDifferenceRow`), which is the same to 2 units in the last place.
    void applyShrink(cv::Mat& w, cv::Mat& v) const;

    /// Fills the built table for the current settings; `setup` does it when it is to be used.
    void buildShrinkTable();

    /// The weight of the tie between gradients and their shrunk planes: 1 after `setup`, and after
    /// `Proc` the first weight of the schedule that is not below 256.
    double beta() const noexcept { return m_beta; }
    /// The last level of the shrink tables, 5 after `setup`.
    int betaSteps() const noexcept { return m_betaSteps; }
    /// Knots of the stored polylines at the alpha of `setup`.
    int tableKnots() const noexcept { return m_tableKnots; }

private:
    void makeNumerator(const cv::Mat& in);
    void runPass(const cv::Mat& estimate, cv::Mat& out);
    template <class Shrink>
    void transformAdjoint(const cv::Mat& estimate, const Shrink& shrinkGradients);
    void divideBlocks(float gamma);
    void inverseRows(cv::Mat& out);

    double m_beta = 0.0;
    double m_alpha = 0.0; ///< in 0..1 after `setup`
    double m_lambda = 0.0;
    double m_betaRate = std::numbers::sqrt2 + std::numbers::sqrt2;
    double m_betaMax = 256.0;
    std::int32_t m_newtonIters = 4; ///< of the built table
    cv::Size m_imSize;
    cv::Mat m_kernel;
    std::int32_t m_w = 0;
    std::int32_t m_h = 0;
    std::int32_t m_order = 0;     ///< log2 of the side
    std::int32_t m_betaSteps = 0; ///< the last table level
    std::int32_t m_tableKnots = 0;
    bool m_useStored = true;

    std::unique_ptr<RealFft2D> m_fft;
    AlignedFloats m_kernelSpectrum;
    SpectralQuotient m_quotient;
    AlignedFloats m_numerator; ///< conj(K) Y of the current plane
    AlignedFloats m_spectrum;  ///< of the adjoint, then of the estimate
    BuiltShrinkTable m_lut;
    ThreadScratch m_scratch;
};

} // namespace vel
