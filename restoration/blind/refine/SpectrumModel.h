#pragma once

#include "restoration/threads/Cancellation.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// The expected power spectrum of a blurred picture: S = A |K|^2 f^-3 + N. The level A of the sharp
/// picture is free in each patch of the frequency plane, K is the transform of the kernel, and N
/// the power of white noise.
class SpectrumModel {
public:
    struct Frequency {
        int patch = -1;     ///< -1: not looked at
        double prior = 0.0; ///< f^-3
        double power = 0.0; ///< P, of the picture
        double blur = 0.0;  ///< |K|^2
    };

    /// Without power and blur.
    /// @param fft   whose half spectra have these frequencies
    /// @param noise N, above 0
    SpectrumModel(const vel::RealFft2D& fft, double noise);

    /// One for each slot of the half spectra, in their order.
    std::vector<Frequency>& frequencies() noexcept { return m_frequencies; }
    /// How many of them are looked at.
    double count() const noexcept { return m_count; }

    double noise() const noexcept { return m_noise; }
    /// A f^-3 at a frequency that is looked at.
    double sharpPower(const Frequency& at) const {
        return m_levels[static_cast<std::size_t>(at.patch)] * at.prior;
    }

    /// Sets the levels to those that explain the power without a blur.
    void resetLevels();
    /// Moves the levels towards the most likely ones.
    /// @throws Failure VELORN_STATUS_CANCELLED
    void fitLevels(int rounds, const Cancellation& cancellation);

private:
    void markPatches(const vel::RealFft2D& fft);

    double m_noise;
    std::vector<Frequency> m_frequencies;
    std::vector<double> m_levels; ///< A of each patch
    double m_count = 0.0;
};

} // namespace restoration
