#include "restoration/finishing/EdgeSharpener.h"

#include "tests/restoration/deconvolution/CircularScene.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

constexpr int kSide = 64;

TEST(EdgeSharpener, UnitGainWithoutSlopeIsOff) {
    EXPECT_FALSE(EdgeSettings{}.isOn());
    EXPECT_TRUE((EdgeSettings{0.85f, 0.5f, 1.0f, 0.005f}.isOn()));
    EXPECT_TRUE((EdgeSettings{0.85f, 0.0f, 1.5f, 0.005f}.isOn()));
}

TEST(EdgeSharpener, GainSteepensAnEdge) {
    Plane plane(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            plane.row(y)[x] = 0.5f + 0.3f * std::tanh(0.5f * static_cast<float>(x - 32));
        }
    }
    Plane sharpened(kSide, kSide);
    EdgeSharpener(EdgeSettings{1.0f, 0.0f, 2.0f, 0.005f}).sharpen(plane, sharpened);
    const float before = plane.row(30)[34] - plane.row(30)[30];
    EXPECT_GT(sharpened.row(30)[34] - sharpened.row(30)[30], 1.05f * before);
}

TEST(EdgeSharpener, DoesNotReadItsTarget) {
    const Plane plane = test::circularScene(kSide);
    Plane sharpened(kSide, kSide);
    std::ranges::fill(sharpened.values(), std::numeric_limits<float>::quiet_NaN());
    EdgeSharpener(EdgeSettings{1.0f, 2.0f, 1.5f, 0.005f}).sharpen(plane, sharpened);
    for (const float value : sharpened.values()) {
        ASSERT_FALSE(std::isnan(value));
    }
}

} // namespace
} // namespace restoration
