#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace restoration {

/// Mean powers of a picture along an axis of frequencies, in steps of 1 / side of the spectrum.
struct SpectralProfile {
    std::vector<double> levels;  ///< mean logarithms of the power
    std::vector<double> powers;  ///< mean powers
    std::vector<double> weights; ///< how many frequencies each mean is of

    explicit SpectralProfile(std::size_t length)
        : levels(length), powers(length), weights(length) {}

    void add(std::size_t step, double level, double power) {
        levels[step] += level;
        powers[step] += power;
        weights[step] += 1.0;
    }
    /// Divides the sums by their numbers.
    void finish();
};

/// The squared spectrum of a blur along the axis of a profile.
struct BlurPattern {
    /// Windows and the discrete transform fill zeros up to this share of the envelope.
    static constexpr double kLeak = 0.015;

    std::vector<double> powers;
    /// The same without its zeros: a smooth upper bound.
    std::vector<double> envelope;
    /// The distance of zeros, in steps.
    double period = 0.0;
};

/// How well a blur explains the ripples of a profile.
struct RippleMatch {
    /// By how much the pattern reduces the weighted squares of what a smooth fall leaves.
    double evidence = 0.0;
    /// The height of the ripples in the profile over those of the pattern.
    double height = 0.0;
};

/// Compares the ripples of a profile with those that blurs leave in a power spectrum. What is
/// smooth, a + b log t + c t at the frequency t, is taken for the sharp picture's.
class RippleFit {
public:
    /// @param floor the power of the noise, above 0
    RippleFit(const SpectralProfile& profile, double floor);

    RippleMatch of(const BlurPattern& pattern) const;

private:
    std::vector<double> weightedRest(std::vector<double> values) const;
    const std::vector<double>& ceilingFor(double period) const;

    double m_floor;
    std::vector<double> m_roots; ///< of the weights
    std::vector<std::vector<double>> m_smooth;
    std::vector<double> m_rest;
    /// Largest powers within 1, 2, 4, ... steps.
    std::vector<std::vector<double>> m_ceilings;
};

} // namespace restoration
