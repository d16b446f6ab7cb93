#include "hosts/command/kernels/KernelTaps.h"

#include <gtest/gtest.h>

namespace {

TEST(KernelTaps, WeightAtTheRightEndTakesLightFromTheLeft) {
    const auto taps = velorn::tapsOf({3, 1, {0.0f, 0.25f, 0.75f}});
    ASSERT_EQ(taps.size(), 2u);
    EXPECT_EQ(taps[0].right, 0);
    EXPECT_EQ(taps[0].weight, 0.25f);
    EXPECT_EQ(taps[1].right, -1);
    EXPECT_EQ(taps[1].down, 0);
    EXPECT_EQ(taps[1].weight, 0.75f);
}

TEST(KernelTaps, WeightAtTheTopTakesLightFromBelow) {
    const auto taps = velorn::tapsOf({1, 3, {1.0f, 0.0f, 0.0f}});
    ASSERT_EQ(taps.size(), 1u);
    EXPECT_EQ(taps[0].right, 0);
    EXPECT_EQ(taps[0].down, 1);
}

} // namespace
