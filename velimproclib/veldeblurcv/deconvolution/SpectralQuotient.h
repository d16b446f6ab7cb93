#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <array>
#include <vector>

namespace vel {

/// The half spectra of `RealFft2D` for square planes: block 0 holds in its first lane four real
/// frequencies, each with a part of a complex slot to itself, which complex arithmetic must leave
/// out. These are their places: F(0, 0), F(0, n/2), F(n/2, 0), F(n/2, n/2).
std::array<std::size_t, 4> realSlots(const RealFft2D& fft) noexcept;

/// product = a conj(b) on one block; `product` may be `a`. A real frequency is a plain product.
void multiplyByConjugate(const RealFft2D& fft, int blockIndex, const float* a, const float* b,
                         float* product) noexcept;

/// The x step of the deconvolution for one kernel, block by block:
///
///     x = (numerator + gamma x) / (|K|^2 + gamma (|Dx|^2 + |Dy|^2)).
///
/// Dx and Dy are the spectra of the circular forward differences. Their magnitudes depend on one
/// coordinate alone, |Dx(v, u)| = 2 |sin(pi u / n)| and |Dy(v, u)| = 2 |sin(pi v / n)|, so no plane
/// of them is stored. Magnitudes are rounded to single precision before they are squared. Both
/// parts are divided by the denominator itself: a product with its inverse would be rounded twice,
/// and would overflow for the tiny denominators of a tiny kernel.
class SpectralQuotient {
public:
    /// Takes |K|^2 from the half spectrum `kernelSpectrum` of an n by n plane.
    /// @throws std::bad_alloc
    void setKernel(const RealFft2D& fft, const float* kernelSpectrum);

    /// Replaces the block `x`. `numerator` is the same block of its spectrum.
    void divide(int blockIndex, const float* numerator, float gamma, float* x) const noexcept;

private:
    static constexpr int kLanes = RealFft2D::kLanes;

    int m_side = 0;
    std::array<std::size_t, 4> m_realSlots{};
    AlignedFloats m_denomKernel;              ///< |K|^2: blocks of n rows of kLanes
    std::vector<float> m_denomGrad;           ///< |D|^2 at frequency 0..n-1
    std::vector<int> m_rowFrequencies;        ///< frequency of the rows as they stand in a block
    std::vector<float> m_rowDenomGrad;        ///< |D|^2 at these
    std::array<float, 4> m_realDenomKernel{}; ///< |K|^2 and
    std::array<float, 4> m_realDenomGrad{};   ///< |Dx|^2 + |Dy|^2 of the real slots
};

} // namespace vel
