#include "velimproclib/tiles/TileWalk.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <utility>
#include <vector>

namespace {

using vel::planBlocks;
using vel::TileWalk;
using vel::TileWindow;
using vel::WalkState;

using Positions = std::vector<std::pair<int, int>>;

struct Visits {
    Positions positions;
    WalkState end;
};

/// Walks as an iterator does; gives up after `most` tiles.
Visits visit(TileWalk walk, std::size_t most = 100000) {
    Visits visits{{}, WalkState::kFinished};
    while (visits.positions.size() < most) {
        if (!walk.atFirstTile()) {
            const WalkState state = walk.advance();
            if (state != WalkState::kTileAhead) {
                visits.end = state;
                return visits;
            }
        }
        visits.positions.emplace_back(walk.m_curX, walk.m_curY);
        walk.noteStored();
    }
    visits.end = WalkState::kTileAhead;
    return visits;
}

TileWalk plainWalk(int width, int height, int tile, int overlap) {
    return {width, height, planBlocks(0, width, tile, overlap),
            planBlocks(0, height, tile, overlap)};
}

Positions row(std::initializer_list<int> starts) {
    Positions positions;
    for (const int start : starts) {
        positions.emplace_back(start, 0);
    }
    return positions;
}

TEST(TileWalk, VisitsThePositionsOfTheWorkedExamples) {
    EXPECT_EQ(visit(plainWalk(300, 1, 300, 16)).positions, row({0}));
    EXPECT_EQ(visit(plainWalk(1000, 1, 300, 16)).positions, row({0, 234, 468, 700}));
    EXPECT_EQ(visit(plainWalk(500, 1, 348, 16)).positions, row({0, 152}));
    EXPECT_EQ(visit(plainWalk(2048, 1, 868, 16)).positions, row({0, 591, 1180}));
    EXPECT_EQ(visit(plainWalk(1000, 1, 224, 8)).positions, row({0, 195, 390, 585, 776}));
}

TEST(TileWalk, MayMakeOneTileMoreThanPlanned) {
    const TileWalk walk = plainWalk(700, 1, 348, 16);
    EXPECT_EQ(walk.m_nBlkX, 2);
    EXPECT_EQ(visit(walk).positions, row({0, 332, 352}));
}

TEST(TileWalk, ScansRowsOfTilesFromTheTop) {
    EXPECT_EQ(visit(plainWalk(500, 500, 348, 16)).positions,
              (Positions{{0, 0}, {152, 0}, {0, 152}, {152, 152}}));
}

TEST(TileWalk, EveryPixelIsVisitedAndTheLastTileEndsWithTheImage) {
    for (int tile = 17; tile < 60; ++tile) {
        for (int total = 1; total < 400; ++total) {
            const Visits visits = visit(plainWalk(total, 1, tile, 16));
            ASSERT_EQ(visits.end, WalkState::kFinished);
            int done = 0;
            for (const auto& [x, y] : visits.positions) {
                ASSERT_LE(x, done);
                ASSERT_GE(x, 0);
                done = std::max(done, x + std::min(tile, total));
            }
            ASSERT_EQ(done, total) << tile;
        }
    }
}

TEST(TileWalk, RowOfTilesThatEndsWithTheImageIsFollowedByTheNextRow) {
    TileWalk walk(64, 100, {2, 40, 24}, {3, 40, 30});
    walk.noteStored();
    ASSERT_EQ(walk.advance(), WalkState::kTileAhead);
    EXPECT_EQ(walk.m_curX, 24);
    EXPECT_TRUE(walk.endsARow());
    EXPECT_EQ(walk.overlapX(), 16);
    walk.noteStored();
    EXPECT_EQ(walk.m_doneX, 64);
    ASSERT_EQ(walk.advance(), WalkState::kTileAhead);
    EXPECT_EQ(walk.m_curX, 0);
    EXPECT_EQ(walk.m_doneX, 0);
    EXPECT_EQ(walk.m_curY, 30);
    EXPECT_EQ(walk.m_doneY, 40);
    EXPECT_EQ(walk.overlapY(), 10);
}

TEST(TileWalk, PulledBackTileOverlapsByMore) {
    TileWalk walk(70, 10, {2, 40, 38}, {1, 40, 40});
    walk.noteStored();
    ASSERT_EQ(walk.advance(), WalkState::kTileAhead);
    EXPECT_EQ(walk.m_curX, 30);
    EXPECT_EQ(walk.overlapX(), 10);
    EXPECT_EQ(walk.storedWidth(), 40);
    EXPECT_EQ(walk.storedHeight(), 10);
    walk.noteStored();
    EXPECT_EQ(walk.advance(), WalkState::kFinished);
}

TEST(TileWalk, StepThatCannotMoveIsToldAndNotWalked) {
    for (int tile = -40; tile <= 16; ++tile) {
        for (int total = 1; total < 100; ++total) {
            const Visits visits = visit(plainWalk(total, 1, tile, 16), 1000);
            ASSERT_NE(visits.end, WalkState::kTileAhead) << tile << " in " << total;
            if (tile < 1 || total >= 2 * tile) {
                const bool fits = total <= tile;
                ASSERT_EQ(visits.end, fits ? WalkState::kFinished : WalkState::kStuck)
                    << tile << " in " << total;
            }
        }
    }
}

TEST(TileWalk, StuckRowsAreToldToo) {
    TileWalk walk(10, 100, {1, 40, 40}, {2, 40, 0});
    walk.noteStored();
    EXPECT_EQ(walk.advance(), WalkState::kStuck);
    EXPECT_EQ(walk.m_curY, 0);
}

TEST(TileWalk, TileWithoutUsefulColumnsIsNotTakenForTheFirstAgain) {
    TileWalk walk(50, 50, {2, 0, 0}, {2, 0, 0});
    EXPECT_TRUE(walk.atFirstTile());
    walk.noteStored();
    EXPECT_FALSE(walk.atFirstTile());
}

void expectWindow(const TileWindow& window, std::initializer_list<int> expected) {
    const std::vector<int> all{window.x,    window.y,   window.width, window.height,
                               window.left, window.top, window.right, window.bottom};
    EXPECT_EQ(all, std::vector<int>(expected));
}

TEST(TileWalk, WindowInsideTheImageNeedsNoMargin) {
    TileWalk walk(100, 100, {3, 20, 20}, {3, 20, 20});
    walk.m_curX = 30;
    walk.m_curY = 40;
    TileWindow window;
    ASSERT_TRUE(walk.windowOf(8, window));
    expectWindow(window, {22, 32, 36, 36, 0, 0, 0, 0});
}

TEST(TileWalk, WindowIsCutAtEveryEdgeOfTheImage) {
    TileWalk walk(100, 100, {3, 20, 20}, {3, 20, 20});
    walk.m_curX = 0;
    walk.m_curY = 80;
    TileWindow window;
    ASSERT_TRUE(walk.windowOf(8, window));
    expectWindow(window, {0, 72, 28, 28, 8, 0, 0, 8});
    walk.m_curX = 80;
    walk.m_curY = 5;
    ASSERT_TRUE(walk.windowOf(8, window));
    expectWindow(window, {72, 0, 28, 33, 0, 3, 8, 0});
}

TEST(TileWalk, ImageSmallerThanATileFillsTheMarginsByMoreThanTheBorder) {
    const TileWalk walk = plainWalk(5, 7, 20, 16);
    TileWindow window;
    ASSERT_TRUE(walk.windowOf(8, window));
    expectWindow(window, {0, 0, 5, 7, 8, 8, 23, 21});
}

TEST(TileWalk, NoSourceUnderTheTileIsTold) {
    TileWindow window;
    EXPECT_FALSE(plainWalk(0, 10, 20, 16).windowOf(8, window));
    EXPECT_FALSE(plainWalk(10, 0, 20, 16).windowOf(8, window));
    EXPECT_FALSE(plainWalk(10, 10, -8, 16).windowOf(8, window));
    EXPECT_TRUE(plainWalk(10, 10, -7, 16).windowOf(8, window));
    EXPECT_FALSE(plainWalk(10, 10, -2147483647, 16).windowOf(2147483647, window));
}

TEST(TileWalk, LayoutTakesTheMarginsOffTheTileAndPutsThemOnAgain) {
    const TileWalk walk(1000, 300, {256, 356, 0, 8, 16});
    EXPECT_EQ(walk.m_roiW, 224);
    EXPECT_EQ(walk.m_roiH, 324);
    EXPECT_EQ(walk.m_nBlkX, 5);
    EXPECT_EQ(walk.m_nBlkY, 1);
    EXPECT_EQ(walk.widthWith(16), 256);
    EXPECT_EQ(walk.heightWith(16), 356);
    EXPECT_EQ(visit(TileWalk(1000, 1, {256, 256, 0, 8, 16})).positions,
              row({0, 195, 390, 585, 776}));
}

TEST(TileWalk, MarginsBeyondTheRangeOfLengthsAreCutToIt) {
    constexpr int kMost = std::numeric_limits<int>::max();
    const TileWalk walk(10, 10, {64, 64, 0, 8, kMost});
    EXPECT_EQ(walk.m_roiW, std::numeric_limits<int>::min());
    TileWindow window;
    EXPECT_FALSE(walk.windowOf(kMost, window));
    EXPECT_EQ(TileWalk(10, 10, {kMost, kMost, 0, 8, 0}).widthWith(kMost), kMost);
}

} // namespace
