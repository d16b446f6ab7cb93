#include "velimproclib/tiles/TileWalk.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
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

/// Walks as an iterator does, for at most `most` tiles.
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
        visits.positions.emplace_back(walk.x(), walk.y());
        walk.noteStored();
    }
    visits.end = WalkState::kTileAhead;
    return visits;
}

TileWalk plainWalk(int width, int height, int tile, int overlap) {
    return {width, height, planBlocks(0, width, tile, overlap),
            planBlocks(0, height, tile, overlap), 0};
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
    EXPECT_EQ(walk.tilesAcross(), 2);
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
    TileWalk walk(64, 100, {2, 40, 24}, {3, 40, 30}, 0);
    walk.noteStored();
    ASSERT_EQ(walk.advance(), WalkState::kTileAhead);
    EXPECT_EQ(walk.x(), 24);
    EXPECT_TRUE(walk.endsARow());
    EXPECT_EQ(walk.overlapX(), 16);
    walk.noteStored();
    EXPECT_EQ(walk.overlapX(), 40);
    ASSERT_EQ(walk.advance(), WalkState::kTileAhead);
    EXPECT_EQ(walk.x(), 0);
    EXPECT_EQ(walk.overlapX(), 0);
    EXPECT_EQ(walk.y(), 30);
    EXPECT_EQ(walk.overlapY(), 10);
}

TEST(TileWalk, PulledBackTileOverlapsByMore) {
    TileWalk walk(70, 10, {2, 40, 38}, {1, 40, 40}, 0);
    walk.noteStored();
    ASSERT_EQ(walk.advance(), WalkState::kTileAhead);
    EXPECT_EQ(walk.x(), 30);
    EXPECT_EQ(walk.overlapX(), 10);
    EXPECT_EQ(walk.storedWidth(), 40);
    EXPECT_EQ(walk.storedHeight(), 10);
    walk.noteStored();
    EXPECT_EQ(walk.advance(), WalkState::kFinished);
}

TEST(TileWalk, StepThatCannotMoveStopsTheWalk) {
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

TEST(TileWalk, StepThatCannotMoveDownStopsTheWalkToo) {
    TileWalk walk(10, 100, {1, 40, 40}, {2, 40, 0}, 0);
    walk.noteStored();
    EXPECT_EQ(walk.advance(), WalkState::kStuck);
    EXPECT_EQ(walk.y(), 0);
}

TEST(TileWalk, TileWithoutUsefulColumnsIsTheFirstOnlyOnce) {
    TileWalk walk(50, 50, {2, 0, 0}, {2, 0, 0}, 0);
    EXPECT_TRUE(walk.atFirstTile());
    walk.noteStored();
    EXPECT_FALSE(walk.atFirstTile());
}

void expectWindow(const std::optional<TileWindow>& window, std::initializer_list<int> expected) {
    ASSERT_TRUE(window);
    const std::vector<int> all{window->x,    window->y,   window->width, window->height,
                               window->left, window->top, window->right, window->bottom};
    EXPECT_EQ(all, std::vector<int>(expected));
}

/// Walks on to the tile at `x`, `y`.
TileWalk movedTo(TileWalk walk, int x, int y) {
    while (walk.x() != x || walk.y() != y) {
        walk.noteStored();
        if (walk.advance() != WalkState::kTileAhead) {
            ADD_FAILURE() << "no tile at " << x << ", " << y;
            break;
        }
    }
    return walk;
}

TEST(TileWalk, WindowInsideTheImageNeedsNoMargin) {
    const TileWalk walk(100, 100, {5, 20, 15}, {5, 20, 20}, 8);
    expectWindow(movedTo(walk, 30, 40).window(), {22, 32, 36, 36, 0, 0, 0, 0});
}

TEST(TileWalk, WindowIsCutAtEveryEdgeOfTheImage) {
    const TileWalk walk(100, 100, {5, 20, 20}, {17, 20, 5}, 8);
    expectWindow(movedTo(walk, 0, 80).window(), {0, 72, 28, 28, 8, 0, 0, 8});
    expectWindow(movedTo(walk, 80, 5).window(), {72, 0, 28, 33, 0, 3, 8, 0});
}

TEST(TileWalk, ImageSmallerThanATileFillsTheMarginsByMoreThanTheBorder) {
    const TileWalk walk(5, 7, {36, 36, 0, 16, 8});
    expectWindow(walk.window(), {0, 0, 5, 7, 8, 8, 23, 21});
}

TEST(TileWalk, TileWithoutImagePixelsHasNoWindow) {
    const auto hasWindow = [](int width, int height, int length, int border) {
        const vel::TileGeometry plan{1, length, length};
        return TileWalk(width, height, plan, plan, border).window().has_value();
    };
    EXPECT_FALSE(hasWindow(0, 10, 20, 8));
    EXPECT_FALSE(hasWindow(10, 0, 20, 8));
    EXPECT_FALSE(hasWindow(10, 10, -8, 8));
    EXPECT_TRUE(hasWindow(10, 10, -7, 8));
    EXPECT_FALSE(hasWindow(10, 10, -2147483647, 2147483647));
}

TEST(TileWalk, UsefulSizesExcludeTheMarginsAndTileSizesIncludeThem) {
    const TileWalk walk(1000, 300, {256, 356, 0, 8, 16});
    EXPECT_EQ(walk.storedWidth(), 224);
    EXPECT_EQ(walk.usefulHeight(), 324);
    EXPECT_EQ(walk.tilesAcross(), 5);
    EXPECT_EQ(walk.tilesDown(), 1);
    EXPECT_EQ(walk.tileWidth(), 256);
    EXPECT_EQ(walk.tileHeight(), 356);
    EXPECT_EQ(visit(TileWalk(1000, 1, {256, 256, 0, 8, 16})).positions,
              row({0, 195, 390, 585, 776}));
}

TEST(TileWalk, SizesBeyond32BitsSaturate) {
    constexpr int kMost = std::numeric_limits<int>::max();
    const TileWalk walk(10, 10, {64, 64, 0, 8, kMost});
    EXPECT_EQ(walk.usefulHeight(), std::numeric_limits<int>::min());
    EXPECT_FALSE(walk.window());
    const vel::TileGeometry longest{1, kMost, kMost};
    EXPECT_EQ(TileWalk(10, 10, longest, longest, kMost).tileWidth(), kMost);
}

} // namespace
