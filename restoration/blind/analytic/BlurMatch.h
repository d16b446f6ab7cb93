#pragma once

#include "restoration/blind/analytic/PowerSpectrum.h"
#include "restoration/blind/analytic/Ripple.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace restoration {

/// A disc or straight motion compared with the ripples of a power spectrum.
struct BlurMatch {
    double extent = 0.0;  ///< the radius, or the length of the stroke, in pixels
    double degrees = 0.0; ///< of a motion, counter-clockwise from the horizontal
    RippleMatch ripple;

    double evidence() const { return ripple.evidence; }
    /// Whether the radii or lengths differ by a factor of 1.16, or the ends by three pixels.
    bool differsFrom(const BlurMatch& other) const;
};

/// The best of `matches`, no two of which are about the same blur; at most `count`.
std::vector<BlurMatch> bestMatches(std::vector<BlurMatch> matches, std::size_t count);

/// The first of up to two matches, if its ripples are those of a blur: evident, high enough, and
/// not those of another blur as well.
std::optional<BlurMatch> clearMatch(const std::vector<BlurMatch>& matches, double leastExtent);

/// The mean power over all directions, up to the reach of the spectrum.
SpectralProfile ringProfile(const PowerSpectrum& spectrum);

} // namespace restoration
