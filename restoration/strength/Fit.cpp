#include "restoration/strength/Fit.h"

#include <algorithm>

namespace restoration {
namespace {

/// The variance for Stein's estimate. `shown` is the variance that the residual shows.
double varianceOf(const AssumedNoise& noise, double shown) noexcept {
    constexpr double kMostOfShown = 1.6;
    constexpr double kCorrelated = 1.1 * 1.1;
    const double variance = noise.deviation * noise.deviation;
    return noise.isCorrelated ? kCorrelated * variance : std::min(variance, kMostOfShown * shown);
}

} // namespace

double riskOf(const Fit& fit, const AssumedNoise& noise) noexcept {
    constexpr double kMostFreedom = 0.99;
    const auto pixels = static_cast<double>(fit.pixels);
    const double residual = fit.residual / pixels;
    const double divergence = fit.divergence / pixels;
    const double left = 1.0 - std::clamp(divergence, 0.0, kMostFreedom);
    const double variance = varianceOf(noise, residual / left);
    return std::max(residual + 2.0 * variance * divergence, residual / (left * left));
}

} // namespace restoration
