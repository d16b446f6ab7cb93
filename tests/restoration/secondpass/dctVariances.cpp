#include "restoration/secondpass/dctVariances.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <numeric>

namespace restoration {
namespace {

/// The covariance of lag (y, x) falls in both directions and along a diagonal.
double covariance(int y, int x) {
    return std::exp(-0.1 * (y * y + x * x) + 0.07 * x * y);
}

Plane covariancePlane(int side) {
    Plane plane(side, side);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            plane.row(y)[x] = static_cast<float>(
                covariance(y < side / 2 ? y : y - side, x < side / 2 ? x : x - side));
        }
    }
    return plane;
}

double basis(int u, int x) {
    return (u == 0 ? std::sqrt(0.125) : 0.5) * std::cos((2 * x + 1) * u * std::numbers::pi / 16);
}

TEST(DctVariances, WhiteNoiseHasItsVarianceInAllCoefficients) {
    Plane plane(32, 32);
    std::ranges::fill(plane.values(), 0.0f);
    plane.row(0)[0] = 0.25f;
    for (const float variance : dctVariances(plane)) {
        EXPECT_NEAR(variance, 0.25f, 1e-6f);
    }
}

TEST(DctVariances, AreTheQuadraticFormsOfTheCovarianceMatrix) {
    const DctVariances found = dctVariances(covariancePlane(64));
    for (int v = 0; v < 8; ++v) {
        for (int u = 0; u < 8; ++u) {
            double expected = 0;
            for (int i = 0; i < 64 * 64; ++i) {
                const int p = i / 64;
                const int q = i % 64;
                expected += basis(v, p / 8) * basis(u, p % 8) * basis(v, q / 8) * basis(u, q % 8) *
                            covariance(p / 8 - q / 8, p % 8 - q % 8);
            }
            EXPECT_NEAR(found[static_cast<std::size_t>(8 * v + u)], expected, 1e-5)
                << v << ' ' << u;
        }
    }
}

TEST(DctVariances, SumToTheVarianceOfAllPixelsOfABlock) {
    const DctVariances found = dctVariances(covariancePlane(16));
    EXPECT_NEAR(std::accumulate(found.begin(), found.end(), 0.0), 64.0, 1e-4);
}

} // namespace
} // namespace restoration
