#include "restoration/finishing/EdgeAwareSmoother.h"

#include "tests/restoration/deconvolution/CircularScene.h"
#include "tests/support/EachTarget.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace restoration {
namespace {

constexpr int kSide = 128;

Plane part(const Plane& plane, int x, int y, int side) {
    Plane result(side, side);
    for (int row = 0; row < side; ++row) {
        std::copy_n(plane.row(y + row) + x, side, result.row(row));
    }
    return result;
}

Plane smoothed(Plane plane) {
    EdgeAwareSmoother().smooth(plane, Cancellation());
    return plane;
}

/// The solution of the weighted least squares by many sweeps of Gauss and Seidel, in double.
Plane solved(const Plane& plane) {
    const int side = plane.width();
    std::vector<double> u(plane.values().begin(), plane.values().end());
    const auto at = [=](int x, int y) { return static_cast<std::size_t>(y * side + x); };
    const auto guide = [&](int x, int y) {
        return std::log(0.8 * static_cast<double>(plane.row(y)[x]) + 0.1);
    };
    for (int sweep = 0; sweep < 4000; ++sweep) {
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                double weights = 1;
                double sum = static_cast<double>(plane.row(y)[x]);
                const auto add = [&](int nx, int ny) {
                    if (nx < 0 || ny < 0 || nx == side || ny == side) {
                        return;
                    }
                    const double weight = 0.05 / (std::abs(guide(nx, ny) - guide(x, y)) + 0.0001);
                    weights += weight;
                    sum += weight * u[at(nx, ny)];
                };
                add(x - 1, y);
                add(x + 1, y);
                add(x, y - 1);
                add(x, y + 1);
                u[at(x, y)] = sum / weights;
            }
        }
    }
    Plane result(side, side);
    std::ranges::transform(u, result.values().begin(),
                           [](double value) { return static_cast<float>(value); });
    return result;
}

TEST(EdgeAwareSmoother, ComesCloseToTheWeightedLeastSquares) {
    Plane scene = test::circularScene(32);
    std::mt19937 random(5);
    for (float& value : scene.values()) {
        value += 0.0002f * static_cast<float>(random() % 200);
    }
    const Plane exact = solved(scene);
    EXPECT_LT(test::distance(smoothed(test::copyOf(scene)), exact),
              0.3 * test::distance(scene, exact));
}

TEST(EdgeAwareSmoother, ConstantPlaneStaysAsItIs) {
    Plane plane(32, 32);
    std::ranges::fill(plane.values(), 0.3f);
    const Plane result = smoothed(std::move(plane));
    for (const float value : result.values()) {
        EXPECT_EQ(value, 0.3f);
    }
}

TEST(EdgeAwareSmoother, PixelsFarFromTheEdgeDoNotDependOnTheTile) {
    const Plane scene = test::circularScene(kSide);
    const Plane whole = smoothed(test::copyOf(scene));
    const Plane tile = smoothed(part(scene, 13, 22, 96));
    for (int y = EdgeAwareSmoother::kReach; y < 96 - EdgeAwareSmoother::kReach; ++y) {
        for (int x = EdgeAwareSmoother::kReach; x < 96 - EdgeAwareSmoother::kReach; ++x) {
            ASSERT_EQ(tile.row(y)[x], whole.row(y + 22)[x + 13]) << x << ", " << y;
        }
    }
}

TEST(EdgeAwareSmoother, AllVariantsGiveTheSameBits) {
    std::vector<float> expected;
    vel::test::forEachTarget([&] {
        const Plane base = smoothed(test::circularScene(kSide));
        const std::vector<float> found(base.values().begin(), base.values().end());
        if (expected.empty()) {
            expected = found;
        }
        EXPECT_EQ(found, expected);
    });
}

TEST(EdgeAwareSmoother, CancelledCallFails) {
    Plane plane = test::circularScene(32);
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(EdgeAwareSmoother().smooth(plane, cancellation), Failure);
}

} // namespace
} // namespace restoration
