#pragma once

#include "restoration/blind/analytic/BlurMatch.h"
#include "restoration/blind/analytic/PowerSpectrum.h"
#include "restoration/blind/analytic/Ripple.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// Compares discs with the mean of a power spectrum over all directions.
class DiscSearch {
public:
    explicit DiscSearch(const PowerSpectrum& spectrum);

    /// The two best discs with radii from 1.3 pixels to `largestRadius`, the best one first, to
    /// 0.05 pixels.
    std::vector<BlurMatch> best(double largestRadius) const;

private:
    BlurMatch of(double radius) const;
    void refine(BlurMatch& match) const;

    int m_side;
    std::size_t m_length;
    RippleFit m_fit;
};

} // namespace restoration
