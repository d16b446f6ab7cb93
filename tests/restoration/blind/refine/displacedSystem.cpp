#include "restoration/blind/refine/displacedSystem.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

/// Correlations that are Gaussians: the autocorrelation of variance 4 + 2 `more` about 0, the
/// correlation of variance 9 + `more` about `centre`.
KernelSystem gaussianSystem(int radius, const Displacement& centre, double more = 0.0) {
    const auto gaussian = [](int reach, double variance, const Displacement& middle) {
        std::vector<double> values;
        for (int y = -reach; y <= reach; ++y) {
            for (int x = -reach; x <= reach; ++x) {
                const double squares = std::pow(x - middle.right, 2) + std::pow(y - middle.down, 2);
                values.push_back(std::exp(-squares / (2.0 * variance)) / variance);
            }
        }
        return values;
    };
    return {radius, gaussian(2 * radius, 4.0 + 2.0 * more, {}),
            gaussian(radius, 9.0 + more, centre)};
}

void expectNear(const std::vector<double>& values, const std::vector<double>& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_NEAR(values[i], expected[i], 5e-3) << i;
    }
}

TEST(DisplacedSystem, MovesTheCorrelationAndLeavesTheAutocorrelation) {
    const KernelSystem moved = displacedSystem(gaussianSystem(13, {0.2, 0.1}), {0.4, -0.7}, 0.0);
    const KernelSystem expected = gaussianSystem(5, {0.6, -0.6});
    EXPECT_EQ(moved.radius, 5);
    expectNear(moved.autocorrelation, expected.autocorrelation);
    expectNear(moved.correlation, expected.correlation);
}

TEST(DisplacedSystem, SmoothingWidensTheAutocorrelationTwiceAsMuch) {
    const KernelSystem smooth = displacedSystem(gaussianSystem(13, {}), {}, 0.8);
    const KernelSystem expected = gaussianSystem(5, {}, 0.64);
    expectNear(smooth.autocorrelation, expected.autocorrelation);
    expectNear(smooth.correlation, expected.correlation);
}

} // namespace
} // namespace restoration
