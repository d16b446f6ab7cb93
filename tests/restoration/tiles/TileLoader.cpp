#include "restoration/tiles/TileLoader.h"

#include "restoration/planes/luminanceChroma.h"
#include "tests/restoration/tiles/madePicture.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr int kSide = 64;

TEST(TileLoader, AWindowInsideThePictureIsKnownAndComplete) {
    const MadePicture made(100, 90, 2);
    const TileLoader loader(PictureReader(made.picture()), kSide, {});
    Tile tile;
    loader.load({20, 30, 50, 40}, tile);
    EXPECT_FALSE(tile.isIncomplete);
    ASSERT_EQ(tile.planes.size(), 2u);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const bool isInside = x < 50 && y < 40;
            ASSERT_EQ(tile.known.row(y)[x], isInside ? 1 : 0);
            if (isInside) {
                ASSERT_EQ(tile.planes[1].row(y)[x], made.at(20 + x, 30 + y, 1));
            }
        }
    }
}

TEST(TileLoader, PixelsBeyondThePictureRepeatItsBorderAndAreUnknown) {
    const MadePicture made(20, 10, 1);
    const TileLoader loader(PictureReader(made.picture()), kSide, {});
    Tile tile;
    loader.load({-5, -6, 30, 22}, tile);
    EXPECT_TRUE(tile.isIncomplete);
    for (int y = 0; y < 22; ++y) {
        for (int x = 0; x < 30; ++x) {
            const int px = std::clamp(x - 5, 0, 19);
            const int py = std::clamp(y - 6, 0, 9);
            ASSERT_EQ(tile.planes[0].row(y)[x], made.at(px, py, 0));
            ASSERT_EQ(tile.known.row(y)[x], px == x - 5 && py == y - 6 ? 1 : 0);
        }
    }
}

TEST(TileLoader, WithoutContinuationTheRepeatedBorderIsKnown) {
    const MadePicture made(20, 10, 1);
    const TileLoader loader(PictureReader(made.picture()), kSide, {PlaneLayout::Channels, false});
    Tile tile;
    loader.load({-5, -6, 30, 22}, tile);
    EXPECT_FALSE(tile.isIncomplete);
    EXPECT_EQ(tile.known.row(0)[0], 1);
    EXPECT_EQ(tile.known.row(21)[29], 1);
    EXPECT_EQ(tile.known.row(22)[29], 0);
    EXPECT_EQ(tile.known.row(21)[30], 0);
}

TEST(TileLoader, ThreeChannelsBecomeLuminanceAndChroma) {
    const MadePicture made(40, 40, 3);
    const TileLoader loader(PictureReader(made.picture()), kSide,
                            {PlaneLayout::LuminanceChroma, true});
    Tile tile;
    loader.load({3, 4, 30, 30}, tile);
    std::vector<float> r{made.at(8, 10, 0)};
    std::vector<float> g{made.at(8, 10, 1)};
    std::vector<float> b{made.at(8, 10, 2)};
    toLuminanceChroma(r, g, b);
    EXPECT_FLOAT_EQ(tile.planes[0].row(6)[5], r[0]);
    EXPECT_NEAR(tile.planes[1].row(6)[5], g[0], 1e-6f);
    EXPECT_NEAR(tile.planes[2].row(6)[5], b[0], 1e-6f);
}

TEST(TileLoader, ATileThatIsLoadedAgainForgetsItsLastWindow) {
    const MadePicture made(100, 100, 1);
    const TileLoader loader(PictureReader(made.picture()), kSide, {});
    Tile used;
    loader.load({-10, -10, 60, 60}, used);
    loader.load({30, 31, 40, 41}, used);
    Tile fresh;
    loader.load({30, 31, 40, 41}, fresh);
    EXPECT_EQ(used.window, fresh.window);
    EXPECT_EQ(used.isIncomplete, fresh.isIncomplete);
    for (int y = 0; y < kSide; ++y) {
        EXPECT_TRUE(std::equal(used.known.row(y), used.known.row(y) + kSide, fresh.known.row(y)));
    }
    for (int y = 0; y < 41; ++y) {
        EXPECT_TRUE(
            std::equal(used.planes[0].row(y), used.planes[0].row(y) + 40, fresh.planes[0].row(y)));
    }
}

} // namespace
} // namespace restoration
