#include "restoration/blind/analytic/StrokeSearch.h"

#include "restoration/blind/analytic/blurPatterns.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <utility>

namespace restoration {
namespace {

constexpr double kShortestStroke = 3.0;
constexpr double kStrokeRatio = 1.05;
constexpr double kStrokeStep = 0.1;
/// Degrees.
constexpr double kTurn = 1.0;
constexpr double kFineTurn = 0.25;
constexpr double kRefinedTurn = 1.5 * kTurn;
/// Frequencies that lie this far across a motion at most, in cycles per pixel: few where the angle
/// is known to a degree only, because far away the zeros of a slightly different angle differ.
constexpr double kNarrow = 0.15;
constexpr double kWide = 0.3;
constexpr std::size_t kRefined = 3;

/// Columns of frequencies from the first to the last; none if the first is larger.
struct Columns {
    double first;
    double last;
};

/// The columns u of the row v, not beyond `reach`, with |v cosine - u sine| < width.
Columns columnsWithin(double width, int v, double cosine, double sine, int reach) {
    const Columns all{PowerSpectrum::kFirst,
                      std::sqrt(static_cast<double>(reach * reach - v * v)) - 1e-9};
    if (std::abs(sine) > 1e-9) {
        const double middle = v * cosine / sine;
        return {std::max(all.first, middle - width / std::abs(sine)),
                std::min(all.last, middle + width / std::abs(sine))};
    }
    return std::abs(v) >= width ? Columns{1.0, 0.0} : all;
}

} // namespace

StrokeSearch::StrokeSearch(const PowerSpectrum& spectrum)
    : m_spectrum(spectrum), m_length(static_cast<std::size_t>(spectrum.reach()) + 1),
      m_rings(ringProfile(spectrum).levels) {}

std::vector<BlurMatch> StrokeSearch::best(double longest, const Cancellation& cancellation) const {
    std::vector<std::pair<double, BlurPattern>> patterns;
    for (double stroke = kShortestStroke; stroke <= longest; stroke *= kStrokeRatio) {
        patterns.emplace_back(stroke, strokePattern(stroke, m_length, m_spectrum.side()));
    }
    std::vector<BlurMatch> coarse;
    for (double degrees = -90.0 + kTurn; degrees <= 90.0; degrees += kTurn) {
        cancellation.check();
        const RippleFit fit(profileAlong(degrees, kNarrow), m_spectrum.floor());
        for (const auto& [stroke, pattern] : patterns) {
            coarse.push_back({stroke, degrees, fit.of(pattern)});
        }
    }
    std::vector<BlurMatch> best = bestMatches(std::move(coarse), kRefined);
    for (BlurMatch& match : best) {
        refine(match);
    }
    return bestMatches(std::move(best), 2);
}

SpectralProfile StrokeSearch::profileAlong(double degrees, double across) const {
    const double cosine = std::cos(degrees * std::numbers::pi / 180.0);
    // Rows count downwards.
    const double sine = -std::sin(degrees * std::numbers::pi / 180.0);
    SpectralProfile profile(m_length + 1);
    const int reach = m_spectrum.reach();
    const double width = across * m_spectrum.side();
    for (int v = -reach; v <= reach; ++v) {
        if (std::abs(v) < PowerSpectrum::kFirst) {
            continue;
        }
        const auto [first, last] = columnsWithin(width, v, cosine, sine, reach);
        for (int u = static_cast<int>(std::ceil(first)); u <= last; ++u) {
            const double along = std::abs(u * cosine + v * sine);
            const auto step = static_cast<std::size_t>(along + 0.5);
            const auto ring = static_cast<std::size_t>(PowerSpectrum::ringOf(v, u));
            profile.add(step, m_spectrum.level(v, u) - m_rings[ring], m_spectrum.power(v, u));
        }
    }
    for (std::vector<double>* values : {&profile.levels, &profile.powers, &profile.weights}) {
        values->resize(m_length);
    }
    profile.finish();
    return profile;
}

void StrokeSearch::refine(BlurMatch& match) const {
    const BlurMatch start = match;
    match.ripple.evidence = 0.0;
    for (double turn = -kRefinedTurn; turn <= kRefinedTurn; turn += kFineTurn) {
        const RippleFit fit(profileAlong(start.degrees + turn, kWide), m_spectrum.floor());
        const int last = static_cast<int>(std::floor(kStrokeRatio * start.extent / kStrokeStep));
        for (int i = static_cast<int>(std::ceil(start.extent / kStrokeRatio / kStrokeStep));
             i <= last; ++i) {
            const double stroke = i * kStrokeStep;
            const RippleMatch ripple = fit.of(strokePattern(stroke, m_length, m_spectrum.side()));
            if (ripple.evidence > match.evidence()) {
                match = {stroke, start.degrees + turn, ripple};
            }
        }
    }
    match.ripple = start.ripple;
}

} // namespace restoration
