#pragma once

#include "restoration/kernels/Kernel.h"
#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <array>
#include <cstddef>
#include <vector>

namespace restoration {

/// Everything that the deconvolution of tiles of one side needs to know about one kernel. Constant
/// after construction, therefore shared by all threads.
///
/// The filters work on one column block of a half spectrum, between `fft().forwardColumns` and
/// `fft().inverseColumns`; `RealFft2D` defines the layout. K is the spectrum of the kernel, D the
/// spectra of the circular forward differences: |D|^2 = |Dx|^2 + |Dy|^2.
class BlurSpectrum {
public:
    /// A kernel larger than the tile wraps round it.
    /// @param side  columns and rows of the tiles; a power of two, at least 32
    /// @throws std::bad_alloc
    BlurSpectrum(const Kernel& kernel, int side);

    int side() const noexcept { return m_fft.width(); }
    /// The larger side of the kernel.
    int kernelSide() const noexcept { return m_kernelSide; }
    const vel::RealFft2D& fft() const noexcept { return m_fft; }
    /// The half spectrum K.
    const float* spectrum() const noexcept { return m_spectrum.data(); }
    /// (numerator + gamma x) / (|K|^2 + gamma |D|^2), block by block.
    const vel::SpectralQuotient& quotient() const noexcept { return m_quotient; }
    std::size_t offsetOf(int block) const noexcept {
        return static_cast<std::size_t>(block) * m_fft.blockFloats();
    }

    /// Blurs: product = K x. `product` may be `x`.
    void blur(int block, const float* x, float* product) const noexcept;
    /// product = conj(K) y. `product` may be `y`.
    void correlate(int block, const float* y, float* product) const noexcept;
    /// Deconvolves with a quadratic prior and blurs again: x *= |K|^2 / (|K|^2 + weight |D|^2).
    void reblur(int block, float weight, float* x) const noexcept;
    /// Deconvolves with a quadratic prior: y = conj(K) y / (|K|^2 + weight |D|^2). With the
    /// spectrum `mean` (not null) gradients are drawn towards those of the mean instead of 0.
    void deconvolve(int block, float weight, const float* mean, float* y) const noexcept;

private:
    static constexpr std::size_t kLanes = vel::RealFft2D::kLanes;
    using ColumnPowers = std::array<float, kLanes>;

    void transform(const Kernel& kernel);
    void storePowers();
    template <class Rows>
    void forEachRowRange(int block, const Rows& rows) const noexcept;

    int m_kernelSide;
    vel::RealFft2D m_fft;
    vel::AlignedFloats m_spectrum;
    vel::SpectralQuotient m_quotient;
    vel::AlignedFloats m_power;           ///< |K|^2: blocks of `side` rows of kLanes
    std::vector<float> m_differencePower; ///< |Dx|^2 at frequency 0..side - 1
    std::vector<float> m_rowPower;        ///< |Dy|^2 of each row of a block
    std::array<std::size_t, 4> m_realSlots{};
    std::array<float, 4> m_realPower{};      ///< |K|^2 at the real slots
    std::array<float, 4> m_realDifference{}; ///< |D|^2 at the real slots
};

} // namespace restoration
