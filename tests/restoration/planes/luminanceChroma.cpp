#include "restoration/planes/luminanceChroma.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace restoration {
namespace {

TEST(LuminanceChroma, GreyHasNoChroma) {
    std::vector<float> r{0.0f, 0.25f, 1.0f};
    std::vector<float> g = r;
    std::vector<float> b = r;
    toLuminanceChroma(r, g, b);
    const std::vector<float> expected{0.0f, 0.25f, 1.0f};
    for (std::size_t i = 0; i < r.size(); ++i) {
        EXPECT_NEAR(r[i], expected[i], 1e-6f);
        EXPECT_NEAR(g[i], 0.0f, 1e-6f);
        EXPECT_NEAR(b[i], 0.0f, 1e-6f);
    }
}

TEST(LuminanceChroma, PureBlueAndRedAreTheEndsOfTheirChroma) {
    std::vector<float> r{0.0f, 1.0f};
    std::vector<float> g{0.0f, 0.0f};
    std::vector<float> b{1.0f, 0.0f};
    toLuminanceChroma(r, g, b);
    EXPECT_EQ(g[0], 0.5f);
    EXPECT_EQ(b[1], 0.5f);
    EXPECT_EQ(r[0], 0.114f);
    EXPECT_EQ(r[1], 0.299f);
}

TEST(LuminanceChroma, TheInverseRestoresTheColours) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> level(-0.5f, 1.5f);
    std::vector<float> planes[3];
    for (std::vector<float>& plane : planes) {
        for (int i = 0; i < 1000; ++i) {
            plane.push_back(level(random));
        }
    }
    const std::vector<float> before[3] = {planes[0], planes[1], planes[2]};
    toLuminanceChroma(planes[0], planes[1], planes[2]);
    fromLuminanceChroma(planes[0], planes[1], planes[2]);
    for (int c = 0; c < 3; ++c) {
        for (std::size_t i = 0; i < 1000; ++i) {
            ASSERT_NEAR(planes[c][i], before[c][i], 1e-6f);
        }
    }
}

} // namespace
} // namespace restoration
