#include "velimproclib/tiles/fillRamp.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

TEST(FillRamp, WeightsGrowEvenlyInsideTheOverlapAndEndAtOne) {
    for (const int n : {1, 2, 3, 7, 8, 16, 100, 331, 1023}) {
        std::vector<float> ramp(static_cast<std::size_t>(n) + 2, -7.0F);
        vel::fillRamp(ramp, n);
        const float inverse = static_cast<float>(1.0 / (n + 1));
        for (int i = 0; i < n; ++i) {
            const float weight = ramp[static_cast<std::size_t>(i)];
            EXPECT_EQ(weight, static_cast<float>((i + 1) * static_cast<double>(inverse)));
            EXPECT_NEAR(weight, (i + 1.0) / (n + 1.0), 1e-7);
            EXPECT_GT(weight, 0.0F);
            EXPECT_LT(weight, 1.0F);
        }
        EXPECT_EQ(ramp[static_cast<std::size_t>(n)], 1.0F);
        EXPECT_EQ(ramp[static_cast<std::size_t>(n) + 1], -7.0F);
    }
}

TEST(FillRamp, NoOverlapGivesOneWeightOfOne) {
    std::vector<float> ramp(1, -7.0F);
    vel::fillRamp(ramp, 0);
    EXPECT_EQ(ramp[0], 1.0F);
}

} // namespace
