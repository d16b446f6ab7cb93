#include "restoration/finishing/OvershootLimiter.h"

#include "tests/restoration/deconvolution/CircularScene.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

constexpr int kSide = 64;

TEST(OvershootLimiter, StrengthBelowOneTenthIsOff) {
    EXPECT_FALSE(OvershootLimiter(0.09f, 9).isOn());
    EXPECT_TRUE(OvershootLimiter(0.1f, 9).isOn());
}

TEST(OvershootLimiter, FullStrengthHoldsASpikeInTheRangeOfItsNeighbourhood) {
    Plane blurred(kSide, kSide);
    std::ranges::fill(blurred.values(), 0.4f);
    Plane deblurred = test::copyOf(blurred);
    deblurred.row(30)[30] = 0.9f;
    deblurred.row(40)[20] = 0.1f;
    Plane limited(kSide, kSide);
    OvershootLimiter(1.0f, 9).limit(blurred, deblurred, limited);
    EXPECT_NEAR(limited.row(30)[30], 0.4f, 0.005f);
    EXPECT_NEAR(limited.row(40)[20], 0.4f, 0.005f);
}

TEST(OvershootLimiter, HalfStrengthKeepsHalfOfTheOvershootUpToAMultipleOfTheBound) {
    Plane blurred(kSide, kSide);
    std::ranges::fill(blurred.values(), 0.2f);
    Plane deblurred = test::copyOf(blurred);
    deblurred.row(30)[30] = 0.4f;
    deblurred.row(40)[40] = 0.9f;
    Plane limited(kSide, kSide);
    OvershootLimiter(0.5f, 9).limit(blurred, deblurred, limited);
    EXPECT_NEAR(limited.row(30)[30], 0.3f, 0.005f);
    EXPECT_NEAR(limited.row(40)[40], 0.5f, 0.005f);
}

TEST(OvershootLimiter, NaNStaysWhereItIs) {
    const Plane blurred = test::circularScene(kSide);
    Plane deblurred = test::copyOf(blurred);
    deblurred.row(30)[30] = std::numeric_limits<float>::quiet_NaN();
    Plane limited(kSide, kSide);
    OvershootLimiter(0.5f, 9).limit(blurred, deblurred, limited);
    EXPECT_TRUE(std::isnan(limited.row(30)[30]));
    EXPECT_FALSE(std::isnan(limited.row(30)[31]));
}

} // namespace
} // namespace restoration
