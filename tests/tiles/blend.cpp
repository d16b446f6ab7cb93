#include "velimproclib/tiles/blend.h"

#include <gtest/gtest.h>

namespace {

TEST(Blend, WeightIsTheShareOfTheFreshValue) {
    EXPECT_EQ(vel::blend(10, 20, 0.0F), 10.0F);
    EXPECT_EQ(vel::blend(10, 20, 0.25F), 12.5F);
    EXPECT_EQ(vel::blend(10, 20, 1.0F), 20.0F);
}

TEST(Blend, EqualLevelsStayThatLevelWhereSumsOfSinglesWouldFallShort) {
    int fallenShort = 0;
    for (int n = 1; n < 1024; ++n) {
        const float weight = static_cast<float>(n) / 1024.3F;
        for (int level = 0; level <= 65535; level += 257) {
            const auto value = static_cast<float>(level);
            ASSERT_EQ(vel::blend(level, level, weight), value) << weight;
            fallenShort += (1.0F - weight) * value + weight * value < value ? 1 : 0;
        }
    }
    EXPECT_GT(fallenShort, 0);
}

TEST(Blend, SumIsRoundedOnce) {
    // 2^24 + 1 is between two singles; half of it and of its neighbour meet exactly above it.
    EXPECT_EQ(vel::blend(16777217.0, 16777219.0, 0.5F), 16777218.0F);
}

} // namespace
