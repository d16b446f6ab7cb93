#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/planes/Plane.h"
#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace restoration {

/// Measures the noise of a blurred plane where the blur has removed the picture: at frequencies
/// that the kernel's spectrum K nearly cancels, only noise is left. Texture, which other measures
/// take for noise, does not reach these frequencies, and noise that is not white is measured where
/// a deconvolution amplifies it. A kernel that does not fit leaves some of the picture there, which
/// then counts as noise.
///
/// The mean periodogram of small squares is fitted by
///
///     noise variance + c |K|^2 / f^2.5,
///
/// where the second term, the usual fall of pictures with the frequency f, explains what the blur
/// left. Low and high frequencies are fitted separately; the greater deviation counts.
class NoiseBehindBlur {
public:
    static constexpr int kSide = 128; ///< of the squares

    /// @throws std::bad_alloc
    explicit NoiseBehindBlur(const Kernel& kernel);

    /// Adds the square whose first pixel is (x, y). It lies inside the plane. Squares may overlap.
    void add(const Plane& plane, int x, int y);

    /// The standard deviation, white = 1. Nothing without squares, and for kernels that remove too
    /// few frequencies.
    std::optional<float> deviation() const;

private:
    static constexpr std::size_t kBands = 2;

    /// A frequency that the blur nearly removes.
    struct Frequency {
        std::size_t slot; ///< of the real part, in the half spectrum
        double signal;    ///< |K|^2 / f^2.5, as the window of the squares spreads it
        double power;     ///< sum of the squares' periodograms
    };
    using Band = std::vector<Frequency>;

    void findFrequencies(const Kernel& kernel);
    void loadSquare(const Plane& plane, int x, int y);
    std::optional<double> variance(const Band& band) const;

    vel::RealFft2D m_fft;
    std::array<float, kSide> m_window; ///< of unit energy
    std::array<Band, kBands> m_bands;
    Plane m_square;
    vel::AlignedFloats m_spectrum;
    vel::AlignedFloats m_rowMemory;
    int m_squares = 0;
};

} // namespace restoration
