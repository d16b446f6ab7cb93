#include "restoration/tiles/tileSide.h"
#include "restoration/tiles/tileMargin.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(TileSide, TilesOfLargePicturesHoldUsefulPixelsForEveryKernel) {
    for (int kernelSide = 1; kernelSide <= 511; ++kernelSide) {
        EXPECT_GE(usefulSide(tileSideFor(kernelSide, 100000, 100000), kernelSide), 64)
            << kernelSide;
    }
}

TEST(TileSide, SmallPictureIsOneTileWithItsRing) {
    EXPECT_EQ(tileSideFor(9, 120, 100), 128);
    EXPECT_EQ(tileSideFor(9, 248, 248), 256);
    EXPECT_EQ(tileSideFor(511, 2, 2), 512);
}

TEST(TileSide, GrowsWithTheKernel) {
    int side = 0;
    for (const int kernelSide : {1, 25, 101, 201, 511}) {
        const int next = tileSideFor(kernelSide, 100000, 100000);
        EXPECT_GE(next, side) << kernelSide;
        side = next;
    }
    EXPECT_GT(side, tileSideFor(1, 100000, 100000));
}

TEST(TileSide, LargePictureIsNotOneHugeTile) {
    EXPECT_LE(tileSideFor(65, 6000, 4000), 1024);
    EXPECT_LE(tileSideFor(201, 6000, 4000), 2048);
}

TEST(TileSide, LongNarrowPictureIsCutAlongItsLongAxisOnly) {
    EXPECT_LE(tileSideFor(9, 100000, 100), 256);
}

} // namespace
} // namespace restoration
