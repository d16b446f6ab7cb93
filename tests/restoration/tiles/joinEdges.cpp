#include "restoration/tiles/joinEdges.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

Plane ramp(int side, int width, int height) {
    Plane plane(side, side);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            plane.row(y)[x] = static_cast<float>(x) / static_cast<float>(width) +
                              static_cast<float>(y) / static_cast<float>(height);
        }
    }
    joinEdges(plane, width, height);
    return plane;
}

TEST(JoinEdges, KeepsTheWindow) {
    const Plane plane = ramp(64, 50, 45);
    for (int y = 0; y < 45; ++y) {
        for (int x = 0; x < 50; ++x) {
            ASSERT_EQ(plane.row(y)[x], static_cast<float>(x) / 50.0f + static_cast<float>(y) / 45);
        }
    }
}

TEST(JoinEdges, NeighboursAcrossTheEndDifferLittle) {
    const Plane plane = ramp(64, 50, 45);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const float value = plane.row(y)[x];
            ASSERT_LT(std::abs(plane.row(y)[(x + 1) % 64] - value), 0.12f) << x << " " << y;
            ASSERT_LT(std::abs(plane.row((y + 1) % 64)[x] - value), 0.12f) << x << " " << y;
        }
    }
}

TEST(JoinEdges, AWindowWithoutARingStays) {
    const Plane plane = ramp(32, 32, 32);
    EXPECT_EQ(plane.row(31)[31], 31.0f / 32.0f + 31.0f / 32.0f);
}

} // namespace
} // namespace restoration
