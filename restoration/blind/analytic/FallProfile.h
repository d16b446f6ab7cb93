#pragma once

#include "restoration/blind/analytic/Ripple.h"

#include <optional>
#include <vector>

namespace restoration {

/// A fall of power with the frequency f as c f^slope |K(f)|^2 + noise.
struct FallFit {
    double slope = 0.0;
    /// The squared differences of the mean logarithms on rings, times the frequencies that each
    /// is the mean of; the mean over the rings. About 5 for a perfect fit.
    double error = 0.0;
};

/// A profile of mean logarithms of power, compared with falls.
class FallProfile {
public:
    /// @param profile in steps of 1 / `side`
    /// @param floor   the power of the noise, above 0
    FallProfile(const SpectralProfile& profile, double floor, int side);

    /// Of the profile, in cycles per pixel; above 0.
    const std::vector<double>& frequencies() const { return m_frequencies; }

    /// The best fall for a blur whose squared spectrum at these frequencies is `blur`, by steps of
    /// Gauss and Newton.
    /// @param slope of the sharp picture; nothing: estimated, -4..-1
    FallFit of(const std::vector<double>& blur, std::optional<double> slope) const;

private:
    /// The level of the fall at f = 1, and its slope, both logarithmic.
    struct Line {
        double offset;
        double slope;
    };
    struct Moments;

    Moments momentsOf(const std::vector<double>& blur, const Line& line) const;

    std::vector<double> m_levels;
    std::vector<double> m_weights;
    std::vector<double> m_frequencies;
    std::vector<double> m_logarithms;
    double m_floor;
};

} // namespace restoration
