#include "restoration/blind/analytic/BlurMatch.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace restoration {
namespace {

constexpr double kDifferentExtent = 1.16;
constexpr double kDifferentEnds = 3.0;
/// What the ripples of other blurs and of periodic scenes do not reach together: on half of the
/// pictures of the study, straight motions and discs have heights of 0.54 and more, an evidence of
/// 1845 and more, and the evidence of the best other blur is at most 0.62 of theirs.
constexpr double kLeastEvidence = 1400.0;
constexpr double kLeastHeight = 0.5;
constexpr double kLeastAdvantage = 1.5;

} // namespace

bool BlurMatch::differsFrom(const BlurMatch& other) const {
    const double larger = std::max(extent, other.extent);
    const double turn = (degrees - other.degrees) * std::numbers::pi / 180.0;
    return larger > kDifferentExtent * std::min(extent, other.extent) ||
           larger * std::abs(std::sin(turn)) > kDifferentEnds;
}

std::vector<BlurMatch> bestMatches(std::vector<BlurMatch> matches, std::size_t count) {
    std::ranges::stable_sort(matches, std::greater(), &BlurMatch::evidence);
    std::vector<BlurMatch> best;
    for (const BlurMatch& match : matches) {
        if (best.size() < count && std::ranges::all_of(best, [&](const BlurMatch& other) {
                return match.differsFrom(other);
            })) {
            best.push_back(match);
        }
    }
    return best;
}

std::optional<BlurMatch> clearMatch(const std::vector<BlurMatch>& matches, double leastExtent) {
    if (matches.empty() || matches.front().extent < leastExtent ||
        matches.front().evidence() < kLeastEvidence ||
        matches.front().ripple.height < kLeastHeight) {
        return std::nullopt;
    }
    const bool isAlone =
        matches.size() < 2 || matches[0].evidence() > kLeastAdvantage * matches[1].evidence();
    return isAlone ? std::optional(matches.front()) : std::nullopt;
}

SpectralProfile ringProfile(const PowerSpectrum& spectrum) {
    SpectralProfile profile(static_cast<std::size_t>(spectrum.reach()) + 1);
    spectrum.forEach(spectrum.reach(), [&](int v, int u) {
        profile.add(static_cast<std::size_t>(PowerSpectrum::ringOf(v, u)), spectrum.level(v, u),
                    spectrum.power(v, u));
    });
    profile.finish();
    return profile;
}

} // namespace restoration
