#include "restoration/blind/analytic/spectralFall.h"

#include "restoration/blind/analytic/blurPatterns.h"
#include "restoration/blind/analytic/FallProfile.h"
#include "restoration/blind/analytic/Ripple.h"
#include "restoration/blind/spectra/eightDirections.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace restoration {
namespace {

constexpr double kLargestSigma = 6.4;
constexpr double kCoarseSigma = 0.2;
constexpr double kFineSigma = 0.05;
/// Discs of smaller radii have no zero below the largest frequency, and those of larger ones have
/// zeros that are seen unless noise hides all.
constexpr double kSmallestRadius = 1.0;
constexpr double kLargestRadius = 4.0;
constexpr double kRadiusStep = 0.05;

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

Best bestGaussian(const FallProfile& fall, std::optional<double> slope) {
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

Best bestDisc(const FallProfile& fall, int side) {
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
    const FallProfile all(rings, spectrum.floor(), spectrum.side());
    const Best gaussian = bestGaussian(all, std::nullopt);
    const Best disc = bestDisc(all, spectrum.side());
    double sum = 0.0;
    double square = 0.0;
    for (SpectralProfile& direction : directions) {
        direction.finish();
        const FallProfile fall(direction, spectrum.floor(), spectrum.side());
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
