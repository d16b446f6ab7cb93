#include "velimproclib/tiles/tileSide.h"

#include <gtest/gtest.h>

namespace {

using vel::tileSideFor;

TEST(TileSide, DependsOnTheLargerSideOfTheImage) {
    EXPECT_EQ(tileSideFor(1, 1), 256);
    EXPECT_EQ(tileSideFor(256, 3), 256);
    EXPECT_EQ(tileSideFor(3, 257), 512);
    EXPECT_EQ(tileSideFor(512, 512), 512);
    EXPECT_EQ(tileSideFor(10, 513), 1024);
    EXPECT_EQ(tileSideFor(1024, 1024), 1024);
}

TEST(TileSide, ImagesAbove1024AreCutIntoTilesOf512) {
    EXPECT_EQ(tileSideFor(1025, 10), 512);
    EXPECT_EQ(tileSideFor(10, 60000), 512);
}

} // namespace
