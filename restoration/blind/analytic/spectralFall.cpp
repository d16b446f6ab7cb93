#include "restoration/blind/analytic/spectralFall.h"

#include "restoration/blind/analytic/blurPatterns.h"
#include "restoration/blind/analytic/Ripple.h"
#include "restoration/blind/spectra/eightDirections.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace restoration {
namespace {

/// The first rings show the contents of the picture.
constexpr std::size_t kFirst = 4;
constexpr double kTypicalSlope = -2.5;
constexpr double kSteepest = -4.0;
constexpr double kFlattest = -1.0;
constexpr int kSteps = 12;
constexpr double kLargestSigma = 6.4;
constexpr double kCoarseSigma = 0.2;
constexpr double kFineSigma = 0.05;
/// Discs of smaller radii have no zero below the largest frequency, and those of larger ones have
/// zeros that are seen unless noise hides all.
constexpr double kSmallestRadius = 1.0;
constexpr double kLargestRadius = 4.0;
constexpr double kRadiusStep = 0.05;

/// A profile of mean logarithms, compared with falls.
class Fall {
public:
    Fall(const SpectralProfile& profile, double floor, int side)
        : m_levels(profile.levels), m_weights(profile.weights), m_floor(floor) {
        // The mean logarithm of an exponential distribution is that of its mean less this.
        for (double& level : m_levels) {
            level += std::numbers::egamma;
        }
        for (std::size_t i = 0; i < m_levels.size(); ++i) {
            m_frequencies.push_back(std::max(static_cast<double>(i), 0.5) / side);
            m_logarithms.push_back(std::log(m_frequencies.back()));
        }
    }

    const std::vector<double>& frequencies() const { return m_frequencies; }

    /// The best fall for a blur of the squared spectrum `blur`.
    FallFit of(const std::vector<double>& blur, std::optional<double> slope) const {
        double offset = m_levels[kFirst] - slope.value_or(kTypicalSlope) * m_logarithms[kFirst];
        FallFit fit{slope.value_or(kTypicalSlope), 0.0};
        for (int step = 0; step <= kSteps; ++step) {
            Moments sum;
            for (std::size_t i = kFirst; i < m_levels.size(); ++i) {
                const double power =
                    std::exp(std::clamp(offset + fit.slope * m_logarithms[i], -60.0, 60.0)) *
                    blur[i];
                const double share = power / (power + m_floor);
                const double rest = m_levels[i] - std::log(power + m_floor);
                sum.add(m_weights[i], share, share * m_logarithms[i], rest);
            }
            fit.error = sum.error / static_cast<double>(m_levels.size() - kFirst);
            if (step == kSteps) {
                break;
            }
            if (slope) {
                offset += limited(sum.first / std::max(sum.square, kTiny));
                continue;
            }
            const double determinant = sum.square * sum.second - sum.mixed * sum.mixed;
            if (!(determinant > kTiny)) {
                break;
            }
            const double turn = (sum.square * sum.other - sum.mixed * sum.first) / determinant;
            const double wanted =
                std::clamp(fit.slope + std::clamp(turn, -1.0, 1.0), kSteepest, kFlattest);
            // The offset that is best with the slope taken.
            offset += limited((sum.first - (wanted - fit.slope) * sum.mixed) /
                              std::max(sum.square, kTiny));
            fit.slope = wanted;
        }
        return fit;
    }

private:
    static constexpr double kTiny = 1e-12;

    static double limited(double step) { return std::clamp(step, -8.0, 8.0); }

    struct Moments {
        double square = 0.0;
        double mixed = 0.0;
        double second = 0.0;
        double first = 0.0;
        double other = 0.0;
        double error = 0.0;

        void add(double count, double toOffset, double toSlope, double rest) {
            square += count * toOffset * toOffset;
            mixed += count * toOffset * toSlope;
            second += count * toSlope * toSlope;
            first += count * toOffset * rest;
            other += count * toSlope * rest;
            error += count * rest * rest;
        }
    };

    std::vector<double> m_levels;
    std::vector<double> m_weights;
    std::vector<double> m_frequencies;
    std::vector<double> m_logarithms;
    double m_floor;
};

std::vector<double> gaussianPower(double sigma, const std::vector<double>& frequencies) {
    std::vector<double> powers;
    const double scale = 2.0 * std::numbers::pi * sigma;
    for (const double frequency : frequencies) {
        powers.push_back(std::exp(-scale * scale * frequency * frequency));
    }
    return powers;
}

struct Best {
    double extent = 0.0;
    FallFit fit{0.0, std::numeric_limits<double>::infinity()};

    void consider(double candidate, const FallFit& candidateFit) {
        if (candidateFit.error < fit.error) {
            extent = candidate;
            fit = candidateFit;
        }
    }
};

Best bestGaussian(const Fall& fall, std::optional<double> slope) {
    Best best;
    const auto consider = [&](double sigma) {
        best.consider(sigma, fall.of(gaussianPower(sigma, fall.frequencies()), slope));
    };
    for (double sigma = 0.0; sigma <= kLargestSigma; sigma += kCoarseSigma) {
        consider(sigma);
    }
    const double coarse = best.extent;
    for (double turn = kFineSigma - kCoarseSigma; turn < kCoarseSigma; turn += kFineSigma) {
        consider(std::max(coarse + turn, 0.0));
    }
    return best;
}

Best bestDisc(const Fall& fall, int side) {
    Best best;
    for (double radius = kSmallestRadius; radius <= kLargestRadius; radius += kRadiusStep) {
        const BlurPattern pattern = discPattern(radius, fall.frequencies().size(), side);
        std::vector<double> powers = pattern.powers;
        for (std::size_t i = 0; i < powers.size(); ++i) {
            powers[i] += BlurPattern::kLeak * pattern.envelope[i];
        }
        best.consider(radius, fall.of(powers, std::nullopt));
    }
    return best;
}

} // namespace

SpectralFall spectralFall(const PowerSpectrum& spectrum) {
    const int reach = spectrum.largestReach();
    const SpectralProfile empty(static_cast<std::size_t>(reach) + 1);
    SpectralProfile rings = empty;
    std::vector<SpectralProfile> directions(kDirections, empty);
    spectrum.forEach(reach, [&](int v, int u) {
        const auto ring = static_cast<std::size_t>(PowerSpectrum::ringOf(v, u));
        const auto direction =
            directionOf(std::atan2(static_cast<double>(v), static_cast<double>(u)));
        rings.add(ring, spectrum.level(v, u), spectrum.power(v, u));
        directions[direction].add(ring, spectrum.level(v, u), spectrum.power(v, u));
    });
    rings.finish();
    const Fall all(rings, spectrum.floor(), spectrum.side());
    const Best gaussian = bestGaussian(all, std::nullopt);
    const Best disc = bestDisc(all, spectrum.side());
    double sum = 0.0;
    double square = 0.0;
    for (SpectralProfile& direction : directions) {
        direction.finish();
        const Fall fall(direction, spectrum.floor(), spectrum.side());
        const double sigma = bestGaussian(fall, gaussian.fit.slope).extent;
        sum += sigma;
        square += sigma * sigma;
    }
    const double mean = sum / static_cast<double>(kDirections);
    const double variance = square / static_cast<double>(kDirections) - mean * mean;
    return {gaussian.extent, gaussian.fit,
            std::sqrt(std::max(variance, 0.0)) / std::max(mean, kFineSigma), disc.extent, disc.fit};
}

} // namespace restoration
