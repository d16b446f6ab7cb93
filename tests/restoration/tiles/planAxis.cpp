#include "restoration/tiles/planAxis.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr AxisRules kRules{480, 64, 33, 24};

TEST(PlanAxis, AShortAxisIsOneTileWithTheWindowThatItNeeds) {
    for (const int length : {1, 2, 100, 480 - 66}) {
        const std::vector<AxisTile> tiles = planAxis(length, kRules);
        ASSERT_EQ(tiles.size(), 1u);
        EXPECT_EQ(tiles[0].windowBegin, -33);
        EXPECT_EQ(tiles[0].windowEnd, length + 33);
        EXPECT_EQ(tiles[0].keptBegin, 0);
        EXPECT_EQ(tiles[0].keptEnd, length);
    }
}

TEST(PlanAxis, OnePixelMoreNeedsTwoTilesOnePixelApart) {
    const std::vector<AxisTile> tiles = planAxis(480 - 66 + 1, kRules);
    ASSERT_EQ(tiles.size(), 2u);
    EXPECT_EQ(tiles[0].windowBegin, -33);
    EXPECT_EQ(tiles[1].windowBegin, -32);
}

TEST(PlanAxis, KeptPixelsHaveMarginsAndCoverTheAxis) {
    for (int length = 415; length < 4000; length += 13) {
        const std::vector<AxisTile> tiles = planAxis(length, kRules);
        EXPECT_EQ(tiles.front().keptBegin, 0);
        EXPECT_EQ(tiles.back().keptEnd, length);
        EXPECT_EQ(tiles.front().windowBegin, -33);
        EXPECT_EQ(tiles.back().windowEnd, length + 33);
        for (std::size_t i = 0; i + 1 < tiles.size(); ++i) {
            const AxisTile& before = tiles[i];
            const AxisTile& after = tiles[i + 1];
            EXPECT_EQ(after.windowEnd - after.windowBegin, 480);
            EXPECT_GE(before.windowEnd - before.keptEnd, 64);
            EXPECT_GE(after.keptBegin - after.windowBegin, 64);
            EXPECT_EQ(before.keptEnd - after.keptBegin, 24);
            if (i > 0) {
                EXPECT_LE(tiles[i - 1].keptEnd, after.keptBegin);
            }
        }
    }
}

TEST(PlanAxis, UsesAsFewTilesAsPossible) {
    // Two tiles cover 480 + (480 - 2 * 64 - 24) pixels with what lies beyond the picture.
    const int largestOfTwo = 480 + 328 - 66;
    EXPECT_EQ(planAxis(largestOfTwo, kRules).size(), 2u);
    EXPECT_EQ(planAxis(largestOfTwo + 1, kRules).size(), 3u);
}

TEST(AxisWeight, WeightsOfAllTilesSumToOne) {
    for (const int length : {1, 414, 415, 1000, 3001}) {
        const std::vector<AxisTile> tiles = planAxis(length, kRules);
        for (int position = 0; position < length; ++position) {
            float sum = 0.0f;
            for (const AxisTile& tile : tiles) {
                if (tile.keptBegin <= position && position < tile.keptEnd) {
                    sum += axisWeight(tile, position);
                }
            }
            ASSERT_NEAR(sum, 1.0f, 2e-7f);
        }
    }
}

TEST(AxisWeight, WeightsRiseAndFallSmoothly) {
    const std::vector<AxisTile> tiles = planAxis(1500, kRules);
    const AxisTile& tile = tiles[1];
    EXPECT_LT(axisWeight(tile, tile.keptBegin), 0.01f);
    EXPECT_LT(axisWeight(tile, tile.keptEnd - 1), 0.01f);
    EXPECT_EQ(axisWeight(tile, tile.keptBegin + 24), 1.0f);
    for (int i = tile.keptBegin; i < tile.keptBegin + 24; ++i) {
        EXPECT_LT(axisWeight(tile, i), axisWeight(tile, i + 1));
        EXPECT_LT(axisWeight(tile, i + 1) - axisWeight(tile, i), 0.07f);
    }
}

} // namespace
} // namespace restoration
