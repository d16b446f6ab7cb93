#include "restoration/blind/parts/kernelOfEdges.h"

#include "restoration/blind/squares/scaleToUnitSum.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace restoration {
namespace {

constexpr int kRadius = 4;
/// Sharp pictures lack as much as a Gaussian of this variance takes.
constexpr double kVarianceOfSharpEdges = 0.2;
constexpr double kVarianceOfPixel = 1.0 / 12.0;
constexpr double kLeastVariance = 0.01;
/// Points along a side of a pixel that weights are summed over.
constexpr int kPoints = 16;
/// Lighter weights, relative to the heaviest one, are removed.
constexpr double kLeastWeight = 1e-3;

/// The variances along the direction in which it is largest, and across.
struct Variances {
    double along = 0.0;
    double across = 0.0;
    double angle = 0.0; ///< from left to right towards downwards
};

/// Variance as a function of the angle is m + c cos(2 angle) + s sin(2 angle).
Variances fitTo(const EdgeSpectrum& edges) {
    const auto count = static_cast<double>(edges.directions.size());
    double mean = 0.0;
    double cosine = 0.0;
    double sine = 0.0;
    for (std::size_t i = 0; i < edges.directions.size(); ++i) {
        const double angle = std::numbers::pi * static_cast<double>(i) / count;
        const double variance = edges.directions[i].variance;
        mean += variance / count;
        cosine += 2.0 * variance * std::cos(2.0 * angle) / count;
        sine += 2.0 * variance * std::sin(2.0 * angle) / count;
    }
    const double swing = std::hypot(cosine, sine);
    const auto ofKernel = [](double variance) {
        return std::max(variance - kVarianceOfSharpEdges - kVarianceOfPixel, kLeastVariance);
    };
    return {ofKernel(mean + swing), ofKernel(mean - swing), std::atan2(sine, cosine) / 2.0};
}

/// The sum of a Gaussian over points of the pixel (x, y).
double weightOf(const Variances& variances, int x, int y) {
    const double right = std::cos(variances.angle);
    const double down = std::sin(variances.angle);
    double sum = 0.0;
    for (int j = 0; j < kPoints; ++j) {
        for (int i = 0; i < kPoints; ++i) {
            const double px = x + (i + 0.5) / kPoints - 0.5;
            const double py = y + (j + 0.5) / kPoints - 0.5;
            const double along = px * right + py * down;
            const double across = py * right - px * down;
            sum += std::exp(-0.5 *
                            (along * along / variances.along + across * across / variances.across));
        }
    }
    return sum;
}

} // namespace

SquareKernel kernelOfEdges(const EdgeSpectrum& edges) {
    const Variances variances = fitTo(edges);
    SquareKernel kernel(2 * kRadius + 1);
    for (int y = -kRadius; y <= kRadius; ++y) {
        for (int x = -kRadius; x <= kRadius; ++x) {
            kernel.at(y + kRadius, x + kRadius) = weightOf(variances, x, y);
        }
    }
    const double least = kLeastWeight * kernel.largest();
    for (double& weight : kernel.values) {
        weight = weight < least ? 0.0 : weight;
    }
    scaleToUnitSum(kernel);
    return kernel;
}

} // namespace restoration
