#include "restoration/blind/analytic/DiscSearch.h"

#include "restoration/blind/analytic/blurPatterns.h"

#include <cmath>
#include <utility>

namespace restoration {
namespace {

constexpr double kSmallestRadius = 1.3;
constexpr double kRadiusRatio = 1.02;
constexpr double kRadiusStep = 0.05;
/// Radii are refined within this factor.
constexpr double kRefinedRatio = 1.04;

} // namespace

DiscSearch::DiscSearch(const PowerSpectrum& spectrum)
    : m_side(spectrum.side()), m_length(static_cast<std::size_t>(spectrum.reach()) + 1),
      m_fit(ringProfile(spectrum), spectrum.floor()) {}

std::vector<BlurMatch> DiscSearch::best(double largestRadius) const {
    std::vector<BlurMatch> coarse;
    for (double radius = kSmallestRadius; radius <= largestRadius; radius *= kRadiusRatio) {
        coarse.push_back(of(radius));
    }
    std::vector<BlurMatch> best = bestMatches(std::move(coarse), 2);
    if (!best.empty()) {
        refine(best.front());
    }
    return best;
}

BlurMatch DiscSearch::of(double radius) const {
    return {radius, 0.0, m_fit.of(discPattern(radius, m_length, m_side))};
}

void DiscSearch::refine(BlurMatch& match) const {
    const double start = match.extent;
    const int last = static_cast<int>(std::floor(kRefinedRatio * start / kRadiusStep));
    for (int i = static_cast<int>(std::ceil(start / kRefinedRatio / kRadiusStep)); i <= last; ++i) {
        const BlurMatch fine = of(i * kRadiusStep);
        if (fine.evidence() > match.evidence()) {
            match = fine;
        }
    }
}

} // namespace restoration
