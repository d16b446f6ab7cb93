#include "velimproclib/tiles/blend.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>

namespace {

TEST(Blend, WeightIsTheShareOfTheFreshValue) {
    EXPECT_EQ(vel::blend(10, 20, 0.0F), 10.0F);
    EXPECT_EQ(vel::blend(10, 20, 0.25F), 12.5F);
    EXPECT_EQ(vel::blend(10, 20, 1.0F), 20.0F);
}

TEST(Blend, EqualLevelsStayThatLevelWhereSumsOfSinglesAreBelowIt) {
    int below = 0;
    for (int n = 1; n < 1024; ++n) {
        const float weight = static_cast<float>(n) / 1024.3F;
        for (int level = 0; level <= 65535; level += 257) {
            const auto value = static_cast<float>(level);
            ASSERT_EQ(vel::blend(level, level, weight), value) << weight;
            below += (1.0F - weight) * value + weight * value < value ? 1 : 0;
        }
    }
    EXPECT_GT(below, 0);
}

TEST(Blend, ExactSumIsRoundedToSingleOnce) {
    int otherInSingles = 0;
    for (int n = 1; n < 300; ++n) {
        // The weight in units of 2^-32, so that the exact sum of levels is an integer below 2^53.
        const float weight = 1.0F / static_cast<float>(n + 1);
        const auto units = static_cast<std::int64_t>(std::ldexp(weight, 32));
        for (int old = 0; old < 256; old += 5) {
            for (int fresh = 0; fresh < 256; fresh += 51) {
                const std::int64_t sum = old * ((std::int64_t{1} << 32) - units) + fresh * units;
                const float expected = std::ldexp(static_cast<float>(sum), -32);
                ASSERT_EQ(vel::blend(old, fresh, weight), expected)
                    << old << ' ' << fresh << ' ' << weight;
                ASSERT_EQ(vel::blendInDouble(old, fresh, weight),
                          std::ldexp(static_cast<double>(sum), -32));
                const float singles =
                    (1.0F - weight) * static_cast<float>(old) + weight * static_cast<float>(fresh);
                otherInSingles += singles != expected ? 1 : 0;
            }
        }
    }
    EXPECT_GT(otherInSingles, 1000);
}

} // namespace
