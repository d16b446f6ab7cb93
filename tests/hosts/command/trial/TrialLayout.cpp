#include "hosts/command/trial/TrialLayout.h"

#include <gtest/gtest.h>

namespace {

using velorn::TrialLayout;

TEST(TrialLayout, SheetsOfUsualTilesFitAScreen) {
    for (int tiles = 1; tiles <= 60; ++tiles) {
        const auto sides = TrialLayout::usualSides(tiles);
        const TrialLayout layout(sides.width, sides.height, 60, tiles);
        EXPECT_LE(layout.sheetWidth(), 1920) << tiles;
        EXPECT_EQ(layout.footer() > 1080, tiles > 8) << tiles;
    }
}

TEST(TrialLayout, RowsAreFilledEvenly) {
    const TrialLayout layout(400, 300, 40, 5);
    EXPECT_EQ(layout.top(0), layout.top(2));
    EXPECT_LT(layout.top(2), layout.top(3));
    EXPECT_EQ(layout.left(0), layout.left(3));
    EXPECT_EQ(layout.sheetWidth(), 4 * TrialLayout::kMargin + 3 * 400);
}

TEST(TrialLayout, TilesWiderThanAScreenLieBelowEachOther) {
    const TrialLayout layout(3000, 200, 40, 3);
    EXPECT_EQ(layout.left(0), layout.left(2));
    EXPECT_EQ(layout.top(1) - layout.top(0), 200 + TrialLayout::kGap + 40 + TrialLayout::kMargin);
    EXPECT_GE(layout.footer(), layout.top(2) + 200 + TrialLayout::kGap + 40);
}

} // namespace
