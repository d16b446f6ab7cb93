#pragma once

#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <array>
#include <cstddef>
#include <vector>

namespace restoration {

/// How well a kernel explains the power spectrum of a picture.
struct SpectrumFit {
    /// The mean over the frequencies of ln V + P / V, where P is the power of the picture and V the
    /// one expected: |K|^2 A / f^gamma + noise, for the best A and gamma.
    double unlikelihood = 0.0;
    /// The logarithm of the variance of ln(P / V) within rings of frequencies.
    double unevenness = 0.0;
};

/// The power spectrum of a picture, as means of cells of 4 by 4 frequencies; frequencies below
/// 0.012 cycles per pixel, where natural pictures differ most, are left out. Constant after
/// construction; threads may share it.
class PictureSpectrum {
public:
    /// @param picture luminance, 1.0 = white; the window of Hann takes away its rim
    /// @param side    of the transforms, a power of two, at least 32 and the picture's sides
    /// @param noise   standard deviation, in levels of 255
    /// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
    PictureSpectrum(const Plane& picture, int side, double noise, const Cancellation& cancellation);

    /// @param blur the kernel, for planes of `side`
    SpectrumFit fitOf(const BlurSpectrum& blur, const Cancellation& cancellation) const;

private:
    static constexpr std::array kFalls{2.0, 2.5, 3.0};

    struct Cell {
        std::size_t place = 0; ///< among all cells
        int ring = 0;
        double power = 0.0;
        std::array<double, kFalls.size()> expected{}; ///< f^-gamma
    };

    static Cell cellOf(std::size_t place, double frequency, double power);
    double unlikelihood(const std::vector<double>& blurs, std::size_t fall, double level) const;
    double unevenness(const std::vector<double>& blurs, std::size_t fall, double level) const;
    double variance(const std::vector<double>& blurs, std::size_t cell, std::size_t fall,
                    double amplitude) const;

    double m_noiseVariance;
    std::vector<Cell> m_cells;
};

} // namespace restoration
