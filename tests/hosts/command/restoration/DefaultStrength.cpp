#include "hosts/command/restoration/DefaultStrength.h"

#include <gtest/gtest.h>

namespace {

using velorn::defaultStrength;

TEST(DefaultStrength, StrengthDecreasesWithTheNoise) {
    float former = defaultStrength(0.0);
    for (const double noise : {0.5, 1.0, 2.0, 4.0, 8.0, 16.0}) {
        const float strength = defaultStrength(noise);
        EXPECT_LE(strength, former) << noise;
        former = strength;
    }
}

TEST(DefaultStrength, StrengthIsInverseToTheSquareOfTheNoise) {
    EXPECT_FLOAT_EQ(defaultStrength(1.0), 30000.0f);
    EXPECT_FLOAT_EQ(defaultStrength(2.0), 7500.0f);
}

TEST(DefaultStrength, StrengthIsLimitedAtBothEnds) {
    EXPECT_EQ(defaultStrength(0.0), 50000.0f);
    EXPECT_EQ(defaultStrength(1000.0), 500.0f);
}

} // namespace
