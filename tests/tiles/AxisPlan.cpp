#include "velimproclib/tiles/AxisPlan.h"

#include <gtest/gtest.h>

namespace {

using vel::planAlignedTiles;
using vel::planEqualTiles;
using vel::TileGeometry;

TEST(AxisPlan, EqualTilesAreSpreadOverTheAxis) {
    EXPECT_EQ(planEqualTiles(1000, 300, 0.95), (TileGeometry{4, 300, 234}));
    EXPECT_EQ(planEqualTiles(100, 20, 1.0), (TileGeometry{5, 20, 20}));
}

TEST(AxisPlan, StrideOfNothingCountsTwoTiles) {
    EXPECT_EQ(planEqualTiles(1000, 16, 0.0), (TileGeometry{2, 16, 0}));
    EXPECT_EQ(planEqualTiles(1000, 0, 0.5), (TileGeometry{2, 0, 0}));
}

TEST(AxisPlan, AlignedTilesUseTheRoundingTheyAreGiven) {
    const auto plusOne = [](std::int64_t length) { return length + 1; };
    EXPECT_EQ(planAlignedTiles(100, 80, 0.5, plusOne), (TileGeometry{1, 101, 101}));
    EXPECT_EQ(planAlignedTiles(120, 80, 1.0, plusOne), (TileGeometry{2, 61, 61}));
    EXPECT_EQ(planAlignedTiles(1000, 80, 1.0, plusOne).length, 81);
}

} // namespace
