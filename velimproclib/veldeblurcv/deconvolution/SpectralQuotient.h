#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <array>
#include <vector>

namespace vel {

/// The places of the four real frequencies in the half spectrum of a square plane: F(0, 0),
/// F(0, n/2), F(n/2, 0) and F(n/2, n/2). They share the first lane of block 0 in pairs, each as one
/// part of a complex slot, therefore complex arithmetic must leave them out.
std::array<std::size_t, 4> realSlots(const RealFft2D& fft) noexcept;

/// product = a conj(b) on one block; `product` may be `a`. Real frequencies are multiplied as
/// reals.
void multiplyByConjugate(const RealFft2D& fft, int blockIndex, const float* a, const float* b,
                         float* product) noexcept;

/// The x step of the deconvolution for one kernel, block by block:
///
///     x = (numerator + gamma x) / (|K|^2 + gamma (|Dx|^2 + |Dy|^2)).
///
/// Dx and Dy are the spectra of the circular forward differences. Their magnitudes depend on one
/// coordinate each, |Dx(v, u)| = 2 |sin(pi u / n)| and |Dy(v, u)| = 2 |sin(pi v / n)|, therefore no
/// plane of them is stored. Magnitudes are rounded to single precision before they are squared.
/// Both parts are divided by the denominator itself: a product with its inverse would round twice,
/// and would overflow for the tiny denominators of a tiny kernel.
class SpectralQuotient {
public:
    /// Stores |K|^2 of the half spectrum `kernelSpectrum` of an n by n plane.
    /// @throws std::bad_alloc
    void setKernel(const RealFft2D& fft, const float* kernelSpectrum);

    /// Applies the step to the block `x` in place. `numerator` is the same block of its spectrum.
    void divide(int blockIndex, const float* numerator, float gamma, float* x) const noexcept;

private:
    static constexpr int kLanes = RealFft2D::kLanes;

    void storeDifferences(const RealFft2D& fft);
    void storeMagnitudes(const RealFft2D& fft, const float* kernelSpectrum);

    int m_side = 0;
    std::array<std::size_t, 4> m_realSlots{};
    AlignedFloats m_denomKernel;              ///< |K|^2: blocks of n rows of kLanes
    std::vector<float> m_denomGrad;           ///< |D|^2 at frequency 0..n-1
    std::vector<int> m_rowFrequencies;        ///< frequency of each row of a block
    std::vector<float> m_rowDenomGrad;        ///< |D|^2 at these frequencies
    std::array<float, 4> m_realDenomKernel{}; ///< |K|^2 at the real slots
    std::array<float, 4> m_realDenomGrad{};   ///< |Dx|^2 + |Dy|^2 at the real slots
};

} // namespace vel
