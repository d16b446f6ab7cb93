#pragma once

#include "restoration/blind/spectra/SquareTransform.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// The gradients of the sharp picture behind a blurred one, as far as they are edges:
///
///     min over x of |k * x - y|^2 + lambda |grad x|_0
///
/// by half-quadratic splitting (Xu, Zheng, Jia: Unnatural L0 sparse representation for natural
/// image deblurring, CVPR 2013; Anger, Facciolo, Delbracio, IPOL 2019). The weight beta of the
/// splitting begins at 2 lambda and doubles while it is below 8. Gradients weaker than
/// sqrt(lambda / beta) are not kept.
///
/// Not thread-safe.
class LatentGradients {
public:
    /// @param picture square, of the transform's side; columns from `width` and rows from `height`
    ///                join opposite edges
    /// @throws std::bad_alloc
    LatentGradients(SquareTransform& transform, Plane picture, int width, int height);

    /// Finds the gradients for a kernel of sum 1. `lambda` is above 0.
    /// @returns the number of pixels of the picture whose gradient is kept
    std::size_t find(const SquareKernel& kernel, float lambda);

    /// Sets the gradients outside of the picture and within `margin` pixels of its rim to 0.
    void clearMargin(int margin);

    /// Smooths the gradients with a Gaussian of `sigma` pixels, above 0.
    void smooth(double sigma, const Cancellation& cancellation);

    const Plane& right() const noexcept { return m_right; }
    const Plane& down() const noexcept { return m_down; }
    /// The divergence of the gradients, as `divergenceRow` defines it, transformed into `spectrum`.
    void transformDivergence(float* spectrum);
    /// The half spectrum of the blurred picture.
    const float* pictureSpectrum() const noexcept { return m_pictureSpectrum.data(); }

    int width() const noexcept { return m_width; }
    int height() const noexcept { return m_height; }

private:
    void setKernel(const SquareKernel& kernel);
    void transformKeptDivergence(const Plane& x, float threshold);
    void solve(float beta);
    std::size_t keepGradients(const Plane& x, float threshold);

    SquareTransform& m_transform;
    Plane m_picture;
    int m_width;
    int m_height;
    vel::AlignedFloats m_pictureSpectrum;
    vel::AlignedFloats m_numerator; ///< conj(K) Y
    vel::AlignedFloats m_spectrum;
    vel::SpectralQuotient m_quotient;
    Plane m_latent;
    Plane m_right;
    Plane m_down;
    Plane m_rows; ///< 16 rows of a divergence
    std::vector<float> m_lines;
};

/// Writes `kernel` into a plane of zeros with its centre at (0, 0) and cyclic coordinates. The
/// plane is at least as wide and high as the kernel.
void placeCyclically(const SquareKernel& kernel, Plane& plane);

} // namespace restoration
