#include "DefaultStrength.h"

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

TEST(DefaultStrength, StaysInTheSensibleRange) {
    EXPECT_LE(defaultStrength(0.0), 50000.0f);
    EXPECT_GE(defaultStrength(1000.0), 500.0f);
}

} // namespace
