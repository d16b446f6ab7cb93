#pragma once

#include "restoration/blind/analytic/BlurMatch.h"
#include "restoration/blind/analytic/PowerSpectrum.h"
#include "restoration/blind/analytic/Ripple.h"
#include "restoration/threads/Cancellation.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// Compares straight strokes with the means of a power spectrum across all directions.
class StrokeSearch {
public:
    /// @param spectrum outlives the object
    explicit StrokeSearch(const PowerSpectrum& spectrum);

    /// The two best strokes of 3 to `longest` pixels, the best one first, to 0.1 pixels and a
    /// quarter of a degree.
    /// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
    std::vector<BlurMatch> best(double longest, const Cancellation& cancellation) const;

private:
    /// The mean across the direction of `degrees`, up to the distance `across` in cycles per pixel,
    /// less the mean over all directions.
    SpectralProfile profileAlong(double degrees, double across) const;
    void refine(BlurMatch& match) const;

    const PowerSpectrum& m_spectrum;
    std::size_t m_length;
    std::vector<double> m_rings;
};

} // namespace restoration
