#include "restoration/tiles/samplePatches.h"

#include "tests/restoration/tiles/madePicture.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr PatchRules kRules{9, 56, 10, 4};

std::vector<Patch> patchesOf(int width, int height) {
    const MadePicture made(width, height, 1);
    return samplePatches(TileLoader(PictureReader(made.picture()), 64, {}), kRules);
}

TEST(SamplePatches, LargePicturesGiveCompletePatchesWithMargins) {
    const std::vector<Patch> patches = patchesOf(400, 300);
    EXPECT_GE(patches.size(), 6u);
    EXPECT_LE(patches.size(), 9u);
    for (const Patch& patch : patches) {
        const Rect& window = patch.tile.window;
        EXPECT_FALSE(patch.tile.isIncomplete);
        EXPECT_EQ(intersection(window, {0, 0, 400, 300}), window);
        EXPECT_EQ(patch.kept,
                  (Rect{window.x + 10, window.y + 10, window.width - 20, window.height - 20}));
    }
}

TEST(SamplePatches, LieInAllPartsOfThePicture) {
    std::vector<int> quadrants(4);
    for (const Patch& patch : patchesOf(400, 300)) {
        const int column = patch.kept.x + patch.kept.width / 2 < 200 ? 0 : 1;
        const int row = patch.kept.y + patch.kept.height / 2 < 150 ? 0 : 2;
        ++quadrants[static_cast<std::size_t>(row + column)];
    }
    for (const int count : quadrants) {
        EXPECT_GT(count, 0);
    }
}

TEST(SamplePatches, PanoramasAreSampledAlongTheirLength) {
    EXPECT_EQ(patchesOf(2000, 60).size(), 9u);
    EXPECT_EQ(patchesOf(30, 2000).size(), 9u);
}

TEST(SamplePatches, ASmallPictureIsOnePatchWithItsFrame) {
    for (const int side : {1, 20, 48}) {
        const std::vector<Patch> patches = patchesOf(side, side);
        ASSERT_EQ(patches.size(), 1u);
        EXPECT_EQ(patches[0].tile.window, (Rect{-4, -4, side + 8, side + 8}));
        EXPECT_EQ(patches[0].kept, (Rect{0, 0, side, side}));
        EXPECT_TRUE(patches[0].tile.isIncomplete);
    }
}

TEST(SamplePatches, APictureBetweenThePatchAndItsFrameIsCut) {
    const std::vector<Patch> patches = patchesOf(49, 60);
    ASSERT_EQ(patches.size(), 1u);
    EXPECT_EQ(patches[0].kept, (Rect{10, 12, 29, 36}));
}

} // namespace
} // namespace restoration
