#include "velimproclib/tiles/TileStrip.h"

#include "tests/support/GuardedPlane.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace {

using vel::TileStrip;
using vel::TileWalk;

/// Fills the strip's part of the current tile with `value` in every channel.
void fill(TileStrip& strip, const TileWalk& walk, std::uint8_t value, std::size_t channels) {
    for (int y = 0; y < walk.storedHeight(); ++y) {
        std::uint8_t* elements = strip.elementsOf<std::uint8_t>(y, 0);
        std::fill_n(elements, static_cast<std::size_t>(walk.storedWidth()) * channels, value);
    }
}

TEST(TileStrip, TileFadesInOverItsLeftNeighbourOnly) {
    // Tiles of 5 columns at 0 and, pulled back, at 2: they share 3.
    TileWalk walk(7, 2, {2, 5, 4}, {1, 2, 2}, 0);
    TileStrip strip;
    strip.create(walk, CV_8UC3);
    strip.beginTile(walk);
    fill(strip, walk, 100, 3);
    walk.noteStored();
    ASSERT_EQ(walk.advance(), vel::WalkState::kTileAhead);
    strip.beginTile(walk);
    cv::Mat values(2, 5, CV_32FC1, cv::Scalar(0.5));
    strip.fadeIn<std::uint8_t>(values, 0, 1);
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(cv::Mat_<float>(values.row(y)).at<float>(0), 0.25F * 0.5F + 75.0F);
        EXPECT_EQ(values.at<float>(y, 1), 50.25F);
        EXPECT_EQ(values.at<float>(y, 2), 0.75F * 0.5F + 25.0F);
        EXPECT_EQ(values.at<float>(y, 3), 0.5F);
        EXPECT_EQ(values.at<float>(y, 4), 0.5F);
    }
}

TEST(TileStrip, ElementsBeginAtTheTileAndTheChannel) {
    TileWalk walk(7, 2, {2, 5, 4}, {1, 2, 2}, 0);
    TileStrip strip;
    strip.create(walk, CV_16UC3);
    EXPECT_GE(strip.step(), 7 * 6);
    strip.beginTile(walk);
    const std::uint16_t* first = strip.elementsOf<std::uint16_t>(0, 0);
    EXPECT_EQ(strip.elementsOf<std::uint16_t>(0, 2), first + 2);
    EXPECT_EQ(strip.elementsOf<std::uint16_t>(1, 0), first + strip.step() / 2);
    walk.noteStored();
    ASSERT_EQ(walk.advance(), vel::WalkState::kTileAhead);
    strip.beginTile(walk);
    EXPECT_EQ(strip.elementsOf<std::uint16_t>(0, 1), first + 3 * 2 + 1);
}

TEST(TileStrip, MergedRowsFadeInOverFinishedOnesAndAreCopiedBelow) {
    // The second row of tiles: rows 3 to 8 of 10, of which 3 to 5 are finished.
    TileWalk walk(2, 10, {1, 2, 2}, {3, 6, 3}, 0);
    walk.noteStored();
    ASSERT_EQ(walk.advance(), vel::WalkState::kTileAhead);
    TileStrip strip;
    strip.create(walk, CV_8UC3);
    strip.beginTile(walk);
    fill(strip, walk, 100, 3);
    for (const int misalign : {0, 1}) {
        vel::test::GuardedPlane<std::uint8_t> plane(6, 10, 3, misalign);
        plane.fill([] { return 200; });
        cv::Mat target(10, 2, CV_8UC3, plane.data(), static_cast<std::size_t>(plane.step()));
        strip.mergeInto<std::uint8_t, float>(target, walk);
        const std::vector<int> levels{200, 200, 200, 175, 150, 125, 100, 100, 100, 200};
        for (int y = 0; y < 10; ++y) {
            for (int i = 0; i < 6; ++i) {
                EXPECT_EQ(target.ptr(y)[i], levels[static_cast<std::size_t>(y)]) << y;
            }
        }
        EXPECT_TRUE(plane.intact());
    }
}

} // namespace
