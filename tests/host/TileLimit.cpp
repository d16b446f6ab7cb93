#include "TileLimit.h"

#include <gtest/gtest.h>

namespace {

using velorn::largestKernelSide;

TEST(TileLimit, FollowsTheTileOfTheLargerSide) {
    EXPECT_EQ(largestKernelSide(1, 1), 51);
    EXPECT_EQ(largestKernelSide(256, 10), 51);
    EXPECT_EQ(largestKernelSide(257, 10), 115);
    EXPECT_EQ(largestKernelSide(10, 512), 115);
    EXPECT_EQ(largestKernelSide(513, 10), 243);
    EXPECT_EQ(largestKernelSide(1024, 1024), 243);
    EXPECT_EQ(largestKernelSide(1025, 10), 115);
    EXPECT_EQ(largestKernelSide(100000, 100000), 115);
}

} // namespace
