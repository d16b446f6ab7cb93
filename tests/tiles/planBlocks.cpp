#include "velimproclib/tiles/planBlocks.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using vel::planBlocks;
using vel::TileGeometry;

void expectPlan(const TileGeometry& plan, int count, int length, int step) {
    EXPECT_EQ(plan.count, count);
    EXPECT_EQ(plan.length, length);
    EXPECT_EQ(plan.step, step);
}

TEST(PlanBlocks, PlainLayoutGivesTheWorkedExamples) {
    expectPlan(planBlocks(0, 300, 300, 16), 1, 300, 300);
    expectPlan(planBlocks(0, 1000, 300, 16), 4, 300, 234);
    expectPlan(planBlocks(0, 500, 348, 16), 2, 348, 153);
    expectPlan(planBlocks(0, 2048, 868, 16), 3, 868, 591);
    expectPlan(planBlocks(0, 1000, 224, 8), 5, 224, 195);
}

TEST(PlanBlocks, PlanMayCountOneTileLessThanTheWalkMakes) {
    expectPlan(planBlocks(0, 700, 348, 16), 2, 348, 332);
}

TEST(PlanBlocks, ImageOfExactlyATileGivesOneTileWithTheTileAsStep) {
    expectPlan(planBlocks(0, 64, 64, 16), 1, 64, 64);
    expectPlan(planBlocks(0, 63, 64, 16), 1, 64, 64);
}

TEST(PlanBlocks, OnePixelMoreThanATileGivesTwoTilesTwoPixelsApart) {
    expectPlan(planBlocks(0, 301, 300, 16), 2, 300, 2);
}

TEST(PlanBlocks, StepThatWouldLeaveNoOverlapFallsBackToTheWantedOverlap) {
    // rest = 348 over two tiles asks for a step of 349.
    expectPlan(planBlocks(0, 696, 348, 16), 2, 348, 332);
    // 16 / 300 is not exact in single precision: the kept share of 300 truncates.
    const double keep = 1.0 - static_cast<double>(16.0F / 300.0F);
    EXPECT_EQ(planBlocks(0, 599, 300, 16).step, static_cast<int>(keep * 300.0));
}

TEST(PlanBlocks, StepsReachTheEndUnlessTheWantedOverlapIsRestored) {
    const int wanted = 348 - 16;
    int restored = 0;
    for (int total = 349; total < 5000; ++total) {
        const TileGeometry plan = planBlocks(0, total, 348, 16);
        const int end = (plan.count - 1) * plan.step + plan.length;
        if (end < total) {
            ASSERT_EQ(plan.step, wanted) << total;
            ++restored;
        } else {
            // One pixel less and the last tile would end before the image.
            ASSERT_LE(end - (plan.count - 1), total) << total;
        }
    }
    EXPECT_GT(restored, 0);
}

TEST(PlanBlocks, AlignedLayoutTakesOneLongTileUpToOneAndAHalf) {
    expectPlan(planBlocks(1, 449, 300, 8), 1, 464, 464);
    EXPECT_EQ(planBlocks(1, 450, 300, 8).count, 2);
}

TEST(PlanBlocks, AlignedLayoutAddsSixteenToAnExactMultipleToo) {
    expectPlan(planBlocks(1, 512, 400, 8), 1, 528, 528);
    expectPlan(planBlocks(255, 512, 400, 8), 1, 528, 528);
}

TEST(PlanBlocks, AlignedLayoutCutsInTwoUpToThreeTiles) {
    // keep = 0.98 within single precision: 0.5 * 800 / 0.98 = 408.
    expectPlan(planBlocks(1, 800, 400, 8), 2, 416, 416);
    // 1.5 * 800 * 0.98 is the bound between two and many.
    EXPECT_EQ(planBlocks(1, 1175, 400, 8).count, 2);
    EXPECT_EQ(planBlocks(1, 1176, 400, 8).length, 416);
    EXPECT_GT(planBlocks(1, 1177, 400, 8).count, 2);
}

TEST(PlanBlocks, AlignedLayoutWithManyTilesKeepsTheShareOfTheUnroundedTile) {
    // L = 416, keep = 0.98: rest 1584, n = trunc(1584 / 407.68 + 0.85) + 1 = 5, q = 396.
    expectPlan(planBlocks(1, 2000, 400, 8), 5, 416, 397);
}

TEST(PlanAlignedTiles, LengthsUseTheGivenRounding) {
    const auto plusOne = [](std::int64_t length) { return length + 1; };
    EXPECT_EQ(vel::planAlignedTiles(100, 80, 0.5, plusOne), (TileGeometry{1, 101, 101}));
    EXPECT_EQ(vel::planAlignedTiles(120, 80, 1.0, plusOne), (TileGeometry{2, 61, 61}));
    EXPECT_EQ(vel::planAlignedTiles(1000, 80, 1.0, plusOne).length, 81);
}

TEST(PlanBlocks, OverlapAsLongAsTheTileGivesTwoTilesThatCannotMove) {
    expectPlan(planBlocks(0, 1000, 16, 16), 2, 16, 0);
}

TEST(PlanBlocks, TileLengthOfZeroGivesTwoTilesThatCannotMove) {
    const TileGeometry plan = planBlocks(0, 100, 0, 16);
    EXPECT_EQ(plan.count, 2);
    EXPECT_EQ(plan.length, 0);
    EXPECT_LT(plan.step, 1);
}

TEST(PlanBlocks, TileAtOrBelowTheOverlapCannotMoveAlongAnImageTwiceAsLong) {
    for (int tile = -600; tile <= 16; ++tile) {
        for (const int total : {2 * std::abs(tile) + 1, 3 * std::abs(tile) + 7, 5000}) {
            const TileGeometry plan = planBlocks(0, total, tile, 16);
            EXPECT_EQ(plan.count, 2) << tile << " in " << total;
            EXPECT_EQ(plan.length, tile);
            EXPECT_LT(plan.step, 1) << tile << " in " << total;
        }
    }
}

TEST(PlanBlocks, EveryInputIsDefined) {
    const std::vector<int> values{
        std::numeric_limits<int>::min(), -1000000007, -17, -1, 0, 1, 15, 16, 17, 300, 1000000007,
        std::numeric_limits<int>::max()};
    for (const int mode : {0, 1}) {
        for (const int total : values) {
            for (const int tile : values) {
                for (const int overlap : values) {
                    const auto plan =
                        planBlocks(static_cast<std::uint8_t>(mode), total, tile, overlap);
                    EXPECT_GE(plan.count, 1);
                }
            }
        }
    }
}

} // namespace
