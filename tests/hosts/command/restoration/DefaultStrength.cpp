#include "hosts/command/restoration/DefaultStrength.h"

#include <gtest/gtest.h>

namespace {

using velorn::defaultStrength;

TEST(DefaultStrength, FallsWithTheNoise) {
    float former = defaultStrength(0.0);
    for (const double noise : {0.5, 1.0, 2.0, 4.0, 8.0, 16.0}) {
        const float strength = defaultStrength(noise);
        EXPECT_LE(strength, former) << noise;
        former = strength;
    }
}

TEST(DefaultStrength, FollowsTheSquareOfTheNoise) {
    EXPECT_FLOAT_EQ(defaultStrength(1.0), 30000.0f);
    EXPECT_FLOAT_EQ(defaultStrength(2.0), 7500.0f);
}

TEST(DefaultStrength, StaysInTheSensibleRange) {
    EXPECT_LE(defaultStrength(0.0), 50000.0f);
    EXPECT_GE(defaultStrength(1000.0), 500.0f);
}

} // namespace
