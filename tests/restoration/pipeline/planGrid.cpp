#include "restoration/pipeline/planGrid.h"

#include "restoration/failures/Failure.h"
#include "restoration/tiles/tileMargin.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(PlanGrid, EveryKernelAndPictureHasTilesThatFit) {
    for (int kernel = 1; kernel <= 511; kernel += 6) {
        for (const int width : {1, 100, 216, 500, 1200, 6000}) {
            for (const int height : {1, 90, 250, 4000}) {
                const TileGrid grid = planGrid(width, height, kernel);
                int columns = 0;
                for (const PlannedTile& tile : grid.touching({0, 0, width, height})) {
                    ASSERT_LE(tile.window().width, grid.side() - tileRing(kernel));
                    ASSERT_LE(tile.window().height, grid.side() - tileRing(kernel));
                    ASSERT_FALSE(tile.kept().isEmpty());
                    columns +=
                        tile.rows.keptBegin == 0
                            ? tile.columns.keptEnd - tile.columns.keptBegin - tile.columns.fadeAfter
                            : 0;
                }
                ASSERT_EQ(columns, width);
            }
        }
    }
}

TEST(PlanGrid, WindowsAtTheFrameShowAKernelBeyondIt) {
    const Rect small = planGrid(50, 60, 9).touching({0, 0, 1, 1})[0].window();
    EXPECT_EQ(small, (Rect{-16, -16, 82, 92}));
    const Rect large = planGrid(50, 60, 45).touching({0, 0, 1, 1})[0].window();
    EXPECT_EQ(large, (Rect{-45, -45, 140, 150}));
}

TEST(PlanGrid, TilesKeepManyKernels) {
    for (int kernel = 1; kernel <= 121; kernel += 2) {
        const TileGrid grid = planGrid(3000, 3000, kernel);
        EXPECT_GE(usefulSide(grid.side(), kernel), 13 * kernel);
    }
    EXPECT_EQ(planGrid(6000, 4000, 201).side(), 2048);
}

TEST(PlanGrid, PicturesWithMorePixelsAlongAnAxisThanIntegersCountFail) {
    EXPECT_THROW(planGrid((1 << 30) + 1, 1, 3), Failure);
}

TEST(PlanPatches, TheSideGrowsWithTheKernel) {
    EXPECT_EQ(planPatches(9, 256, 6).side, 256);
    for (int kernel = 1; kernel <= 511; kernel += 10) {
        const PatchPlan plan = planPatches(kernel, 256, 6);
        EXPECT_LE(plan.rules.window + tileRing(kernel), plan.side);
        EXPECT_LT(2 * plan.rules.margin, plan.rules.window);
    }
}

} // namespace
} // namespace restoration
