#include "restoration/strength/strengthPatches.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(StrengthPatches, HaveWindowsThatOutgrowTheKernel) {
    for (int side = 1; side <= 511; side += 2) {
        const StrengthPatches sample = strengthPatches(side, 3000, 2000);
        EXPECT_GE(sample.rules.window, 3 * side);
        EXPECT_GT(sample.rules.window, 2 * sample.rules.margin);
        EXPECT_EQ(sample.rules.window, sample.side - (side - 1));
    }
}

TEST(StrengthPatches, CoverAtMostHalfOfAPictureOfSeveralTiles) {
    for (int width = 600; width < 8000; width = width * 3 / 2) {
        const StrengthPatches sample = strengthPatches(9, width, width);
        EXPECT_LE(2.0 * sample.rules.largestCount * sample.side * sample.side, 1.0 * width * width);
    }
}

TEST(StrengthPatches, AreNoMoreInLargerPicturesAndAtLeastOne) {
    EXPECT_EQ(strengthPatches(9, 6000, 4000).rules.largestCount,
              strengthPatches(9, 60000, 40000).rules.largestCount);
    EXPECT_EQ(strengthPatches(9, 30, 20).rules.largestCount, 1);
    EXPECT_EQ(strengthPatches(511, 6000, 4000).rules.largestCount, 1);
}

} // namespace
} // namespace restoration
