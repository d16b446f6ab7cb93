#include "restoration/strength/strengthForNoise.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(StrengthForNoise, IsTheInverseOfTheVarianceWithinBounds) {
    EXPECT_EQ(strengthForNoise(1.0f, 0.5f), 30000.0f);
    EXPECT_EQ(strengthForNoise(2.0f, 0.5f), 7500.0f);
    EXPECT_EQ(strengthForNoise(0.0f, 0.5f), 50000.0f);
    EXPECT_EQ(strengthForNoise(100.0f, 0.5f), 500.0f);
}

TEST(StrengthForNoise, FallsWithTheExponent) {
    EXPECT_NEAR(strengthForNoise(1.0f, 0.0f), 84000.0f, 1.0f);
    EXPECT_NEAR(strengthForNoise(1.0f, 0.8f), 17400.0f, 1.0f);
    EXPECT_NEAR(strengthForNoise(1.0f, 1.0f), 9000.0f, 1.0f);
}

} // namespace
} // namespace restoration
