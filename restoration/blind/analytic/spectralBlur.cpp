#include "restoration/blind/analytic/spectralBlur.h"

#include "restoration/blind/analytic/blurPatterns.h"
#include "restoration/blind/analytic/PowerSpectrum.h"
#include "restoration/blind/analytic/Ripple.h"
#include "restoration/blind/analytic/spectralFall.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

namespace restoration {
namespace {

constexpr double kSmallestRadius = 1.3;
constexpr double kRadiusRatio = 1.02;
constexpr double kRadiusStep = 0.05;
constexpr double kShortestStroke = 3.0;
constexpr double kStrokeRatio = 1.05;
constexpr double kStrokeStep = 0.1;
/// Degrees.
constexpr double kTurn = 1.0;
constexpr double kFineTurn = 0.25;
/// Frequencies that lie this far across a motion at most, in cycles per pixel: few where the angle
/// is known to a degree only, because far away the zeros of a slightly different angle differ.
constexpr double kNarrow = 0.15;
constexpr double kWide = 0.3;
constexpr std::size_t kRefined = 3;
/// Blurs differ when their radii or lengths do by this factor, or their ends by so many pixels.
constexpr double kDifferentExtent = 1.16;
constexpr double kDifferentEnds = 3.0;
/// What the ripples of other blurs and of periodic scenes do not reach together: on half of the
/// pictures of the study, straight motions and discs have heights of 0.54 and more, an evidence of
/// 1845 and more, and the evidence of the best other blur is at most 0.62 of theirs.
constexpr double kLeastEvidence = 1400.0;
/// Of strokes shorter than this; walls of bricks look like them.
constexpr double kShort = 5.0;
constexpr double kLeastEvidenceOfShort = 4000.0;
constexpr double kLeastHeight = 0.5;
constexpr double kLeastAdvantage = 1.5;
constexpr double kLeastRadius = 1.6;
constexpr double kLeastStroke = 3.5;
/// Bounds of falls: sharp pictures have a sigma of 0.55 at most, shakes and motions a larger spread
/// or error. Under noise, discs of about 2 pixels are distinguished from Gaussians by their error.
constexpr int kLeastSide = 128;
constexpr double kLeastSigma = 0.75;
constexpr double kMostSpread = 0.12;
constexpr double kMostSpreadOfDisc = 0.06;
constexpr double kMostError = 9.0;
constexpr double kMostErrorOfDisc = 22.0;
constexpr double kErrorOfDisc = 0.95;

struct Match {
    double extent = 0.0; ///< radius, or the length of the stroke
    double degrees = 0.0;
    RippleMatch ripple;

    double evidence() const { return ripple.evidence; }

    bool differsFrom(const Match& other) const {
        const double larger = std::max(extent, other.extent);
        const double turn = (degrees - other.degrees) * std::numbers::pi / 180.0;
        return larger > kDifferentExtent * std::min(extent, other.extent) ||
               larger * std::abs(std::sin(turn)) > kDifferentEnds;
    }
};

/// The best of `matches`, no two of which are about the same blur; at most `count`.
std::vector<Match> bestOf(std::vector<Match> matches, std::size_t count) {
    std::ranges::stable_sort(matches, std::greater(), &Match::evidence);
    std::vector<Match> best;
    for (const Match& match : matches) {
        if (best.size() < count && std::ranges::all_of(best, [&](const Match& other) {
                return match.differsFrom(other);
            })) {
            best.push_back(match);
        }
    }
    return best;
}

/// The first of two matches, if its ripples are those of a blur.
std::optional<Match> clearOne(const std::vector<Match>& matches, double leastExtent) {
    if (matches.empty() || matches.front().extent < leastExtent ||
        matches.front().evidence() < kLeastEvidence ||
        matches.front().ripple.height < kLeastHeight) {
        return std::nullopt;
    }
    const bool isAlone =
        matches.size() < 2 || matches[0].evidence() > kLeastAdvantage * matches[1].evidence();
    return isAlone ? std::optional(matches.front()) : std::nullopt;
}

/// The mean over all directions.
SpectralProfile ringProfile(const PowerSpectrum& spectrum) {
    SpectralProfile profile(static_cast<std::size_t>(spectrum.reach()) + 1);
    spectrum.forEach(spectrum.reach(), [&](int v, int u) {
        profile.add(static_cast<std::size_t>(PowerSpectrum::ringOf(v, u)), spectrum.level(v, u),
                    spectrum.power(v, u));
    });
    profile.finish();
    return profile;
}

class DiscSearch {
public:
    explicit DiscSearch(const PowerSpectrum& spectrum)
        : m_side(spectrum.side()), m_length(static_cast<std::size_t>(spectrum.reach()) + 1),
          m_fit(ringProfile(spectrum), spectrum.floor()) {}

    /// The two best discs.
    std::vector<Match> best(double largestRadius) const {
        std::vector<Match> coarse;
        for (double radius = kSmallestRadius; radius <= largestRadius; radius *= kRadiusRatio) {
            coarse.push_back(of(radius));
        }
        std::vector<Match> best = bestOf(std::move(coarse), 2);
        if (!best.empty()) {
            refine(best.front());
        }
        return best;
    }

private:
    Match of(double radius) const {
        return {radius, 0.0, m_fit.of(discPattern(radius, m_length, m_side))};
    }

    void refine(Match& match) const {
        const double start = match.extent;
        const int last = static_cast<int>(std::floor(1.04 * start / kRadiusStep));
        for (int i = static_cast<int>(std::ceil(start / 1.04 / kRadiusStep)); i <= last; ++i) {
            const Match fine = of(i * kRadiusStep);
            if (fine.evidence() > match.evidence()) {
                match = fine;
            }
        }
    }

    int m_side;
    std::size_t m_length;
    RippleFit m_fit;
};

class StrokeSearch {
public:
    explicit StrokeSearch(const PowerSpectrum& spectrum)
        : m_spectrum(spectrum), m_length(static_cast<std::size_t>(spectrum.reach()) + 1),
          m_rings(ringProfile(spectrum).levels) {}

    /// The two best strokes.
    std::vector<Match> best(double longest, const Cancellation& cancellation) const {
        std::vector<std::pair<double, BlurPattern>> patterns;
        for (double stroke = kShortestStroke; stroke <= longest; stroke *= kStrokeRatio) {
            patterns.emplace_back(stroke, strokePattern(stroke, m_length, m_spectrum.side()));
        }
        std::vector<Match> coarse;
        for (double degrees = -90.0 + kTurn; degrees <= 90.0; degrees += kTurn) {
            cancellation.check();
            const RippleFit fit(profileAlong(degrees, kNarrow), m_spectrum.floor());
            for (const auto& [stroke, pattern] : patterns) {
                coarse.push_back({stroke, degrees, fit.of(pattern)});
            }
        }
        std::vector<Match> best = bestOf(std::move(coarse), kRefined);
        for (Match& match : best) {
            refine(match);
        }
        return bestOf(std::move(best), 2);
    }

private:
    /// The mean across the direction of `degrees`, up to the distance `across`, less the mean over
    /// all directions.
    SpectralProfile profileAlong(double degrees, double across) const {
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
            // |v cosine - u sine| < width
            double first = PowerSpectrum::kFirst;
            double last = std::sqrt(static_cast<double>(reach * reach - v * v)) - 1e-9;
            if (std::abs(sine) > 1e-9) {
                const double middle = v * cosine / sine;
                first = std::max(first, middle - width / std::abs(sine));
                last = std::min(last, middle + width / std::abs(sine));
            } else if (std::abs(v) >= width) {
                continue;
            }
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

    void refine(Match& match) const {
        const Match start = match;
        match.ripple.evidence = 0.0;
        for (double turn = -1.5 * kTurn; turn <= 1.5 * kTurn; turn += kFineTurn) {
            const RippleFit fit(profileAlong(start.degrees + turn, kWide), m_spectrum.floor());
            const int last = static_cast<int>(std::floor(1.05 * start.extent / kStrokeStep));
            for (int i = static_cast<int>(std::ceil(start.extent / 1.05 / kStrokeStep)); i <= last;
                 ++i) {
                const double stroke = i * kStrokeStep;
                const RippleMatch ripple =
                    fit.of(strokePattern(stroke, m_length, m_spectrum.side()));
                if (ripple.evidence > match.evidence()) {
                    match = {stroke, start.degrees + turn, ripple};
                }
            }
        }
        match.ripple = start.ripple;
    }

    const PowerSpectrum& m_spectrum;
    std::size_t m_length;
    std::vector<double> m_rings;
};

std::optional<KernelKind> clearFall(const SpectralFall& fall) {
    if (fall.sigma < kLeastSigma || fall.spread > kMostSpread) {
        return std::nullopt;
    }
    if (fall.gaussian.error <= kMostError) {
        return KernelKind{KernelKind::Shape::Gaussian, static_cast<float>(fall.sigma), 0.0f};
    }
    if (fall.spread <= kMostSpreadOfDisc && fall.disc.error <= kMostErrorOfDisc &&
        fall.disc.error < kErrorOfDisc * fall.gaussian.error) {
        return KernelKind{KernelKind::Shape::Disc, static_cast<float>(fall.radius), 0.0f};
    }
    return std::nullopt;
}

} // namespace

std::optional<KernelKind> spectralBlur(const Plane& picture, double largestExtent,
                                       const Cancellation& cancellation) {
    const PowerSpectrum spectrum(picture, cancellation);
    const auto disc = clearOne(DiscSearch(spectrum).best(largestExtent / 2.0), kLeastRadius);
    const auto stroke =
        clearOne(StrokeSearch(spectrum).best(largestExtent, cancellation), kLeastStroke);
    const bool isDoubtful =
        stroke && stroke->extent < kShort && stroke->evidence() < kLeastEvidenceOfShort;
    if (disc && (!stroke || disc->evidence() > stroke->evidence())) {
        return KernelKind{KernelKind::Shape::Disc, static_cast<float>(disc->extent), 0.0f};
    }
    if (stroke && !isDoubtful) {
        return KernelKind{KernelKind::Shape::Motion, static_cast<float>(stroke->extent + 1.0),
                          undirectedAngle(static_cast<float>(stroke->degrees))};
    }
    return spectrum.side() < kLeastSide ? std::nullopt : clearFall(spectralFall(spectrum));
}

} // namespace restoration
