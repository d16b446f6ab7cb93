#include "restoration/finishing/DetailEnhancer.h"

#include "tests/restoration/deconvolution/CircularScene.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

constexpr int kSide = 64;

TEST(DetailEnhancer, GainRaisesTheContrastOfTexture) {
    Plane plane(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            plane.row(y)[x] = 0.5f + ((x + y) % 2 == 0 ? 0.01f : -0.01f);
        }
    }
    DetailEnhancer({0.5f, 0.0f}).enhance(plane, Cancellation());
    const float contrast = plane.row(32)[32] - plane.row(32)[33];
    EXPECT_GT(contrast, 0.03f);
    EXPECT_LT(contrast, 0.051f);
}

TEST(DetailEnhancer, CutsValuesThatAreNoColours) {
    Plane plane = test::circularScene(kSide);
    plane.row(10)[10] = std::numeric_limits<float>::infinity();
    plane.row(20)[20] = -1e30f;
    DetailEnhancer({1.0f, 0.5f}).enhance(plane, Cancellation());
    for (const float value : plane.values()) {
        ASSERT_TRUE(std::abs(value) < 4.0f);
    }
}

} // namespace
} // namespace restoration
