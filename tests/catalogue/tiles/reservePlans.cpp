#include "velimproclib/catalogue/tiles/reservePlans.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using vel::reserveEvenTilePlan;
using vel::reserveTilePlan;
using vel::TileGeometry;

TEST(ReserveTilePlan, MultipleOfSixteenStaysUnchanged) {
    EXPECT_EQ(reserveTilePlan(512, 400, 0.02F), (TileGeometry{1, 512, 512}));
    EXPECT_EQ(reserveTilePlan(513, 400, 0.02F), (TileGeometry{1, 528, 528}));
}

TEST(ReserveTilePlan, TwoTilesCoverTheHalvesWithTheirShareOfOverlap) {
    // 0.5 * 800 / 0.75 = 533.
    EXPECT_EQ(reserveTilePlan(800, 400, 0.25F), (TileGeometry{2, 544, 400}));
}

TEST(ReserveTilePlan, ManyTilesFollowThePlainLayout) {
    // L = 400, keep = 0.75: rest 1600, n = trunc(1600 / 300 + 0.85) + 1 = 7, q = 266.
    EXPECT_EQ(reserveTilePlan(2000, 400, 0.25F), (TileGeometry{7, 400, 267}));
}

TEST(ReserveTilePlan, EveryFractionIsDefined) {
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float fraction :
         {0.0F, 1.0F, 2.0F, -1.0F, infinity, -infinity, std::numeric_limits<float>::quiet_NaN()}) {
        for (const int tile : {-5, 0, 1, 400}) {
            EXPECT_GE(reserveTilePlan(2000, tile, fraction).count, 1);
        }
    }
}

TEST(ReserveEvenTilePlan, ShortAxisIsOneTileOfItsLength) {
    EXPECT_EQ(reserveEvenTilePlan(499, 400, 16), (TileGeometry{1, 499, 499}));
}

TEST(ReserveEvenTilePlan, TwoTilesAreHalvesRoundedUpToEven) {
    EXPECT_EQ(reserveEvenTilePlan(500, 400, 16), (TileGeometry{2, 266, 250}));
    EXPECT_EQ(reserveEvenTilePlan(502, 400, 16), (TileGeometry{2, 268, 252}));
    EXPECT_EQ(reserveEvenTilePlan(999, 400, 15), (TileGeometry{2, 514, 500}));
}

TEST(ReserveEvenTilePlan, ManyTilesShareTheRemainder) {
    // n = trunc(2000 / 384 + 0.5) = 5, q = 400, e = 16 / 5 = 3.
    EXPECT_EQ(reserveEvenTilePlan(2000, 400, 16), (TileGeometry{5, 420, 403}));
    // n = trunc(1000 / 384 + 0.5) = 3, q = 333, e = (1 + 16) / 3 = 5.
    EXPECT_EQ(reserveEvenTilePlan(1000, 400, 16), (TileGeometry{3, 354, 338}));
}

TEST(ReserveEvenTilePlan, NegativeOverlapAddsNothingToTheStep) {
    // n = trunc(2000 / 500 + 0.5) = 4, q = 500, e is at least 0.
    EXPECT_EQ(reserveEvenTilePlan(2000, 400, -100), (TileGeometry{4, 400, 500}));
}

TEST(ReserveEvenTilePlan, TileAtTheOverlapIsDefined) {
    EXPECT_GE(reserveEvenTilePlan(2000, 16, 16).count, 1);
    EXPECT_GE(reserveEvenTilePlan(2000, 8, 16).count, 1);
    EXPECT_GE(reserveEvenTilePlan(2000, 0, 0).count, 1);
}

} // namespace
