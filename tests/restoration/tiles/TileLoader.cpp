#include "restoration/tiles/TileLoader.h"

#include "restoration/planes/luminanceChroma.h"
#include "tests/restoration/tiles/madePicture.h"

#include <algorithm>
#include <cstdint>
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

TEST(TileLoader, LightIsLoadedThroughTheCurvesOfTheChannels) {
    const MadePicture made(40, 30, 3);
    const ToneCurves curves;
    LoadRules rules;
    rules.light = &curves;
    Tile tile;
    TileLoader(PictureReader(made.picture()), kSide, rules).load({4, 3, 30, 20}, tile);
    for (int c = 0; c < 3; ++c) {
        const float light = curves.of(static_cast<std::size_t>(c)).light(made.at(4 + 11, 3 + 7, c));
        EXPECT_EQ(tile.planes[static_cast<std::size_t>(c)].row(7)[11], light);
    }

    // Luminance is that of the light.
    rules.layout = PlaneLayout::LuminanceChroma;
    TileLoader(PictureReader(made.picture()), kSide, rules).load({4, 3, 30, 20}, tile);
    const float luminance = 0.299f * curves.of(0).light(made.at(15, 10, 0)) +
                            0.587f * curves.of(1).light(made.at(15, 10, 1)) +
                            0.114f * curves.of(2).light(made.at(15, 10, 2));
    EXPECT_NEAR(tile.planes[0].row(7)[11], luminance, 1e-6f);
}

TEST(TileLoader, PixelsThatOneChannelClippedAreUnknown) {
    MadePicture made(40, 30, 3);
    auto* samples = static_cast<std::uint8_t*>(made.picture().data);
    samples[(22 * 40 + 20) * 3 + 1] = 255; // a white pixel beside darker ones
    const Kernel kernel{3, 3, std::vector<float>(9, 1.0f / 9.0f)};
    const Kernel* kernels[] = {&kernel};
    const PictureClipping clipping({0.998f, 1.0f}, kernels, 3, {}, nullptr);
    LoadRules rules{PlaneLayout::LuminanceChroma, true};
    Tile tile;
    TileLoader(PictureReader(made.picture()), kSide, rules).load({5, 5, 30, 20}, tile);
    EXPECT_FALSE(tile.isIncomplete);
    EXPECT_EQ(tile.known.row(17)[15], 1);

    rules.clipping = &clipping;
    TileLoader(PictureReader(made.picture()), kSide, rules).load({5, 5, 30, 20}, tile);
    EXPECT_TRUE(tile.isIncomplete);
    EXPECT_EQ(tile.known.row(17)[15], 0);
    EXPECT_EQ(tile.known.row(19)[16], 0);
    EXPECT_EQ(tile.known.row(17)[18], 1);
    TileLoader(PictureReader(made.picture()), kSide, rules).load({21, 0, 19, 30}, tile);
    EXPECT_EQ(tile.known.row(22)[0], 1) << "the pixel lies beyond the window";
}

} // namespace
} // namespace restoration
