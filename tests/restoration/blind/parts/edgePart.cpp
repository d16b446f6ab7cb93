#include "restoration/blind/parts/edgePart.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(EdgePart, HoldsEdgesRatherThanTexture) {
    // Left: fine texture of small contrast. Right: shapes.
    Plane picture(1600, 900);
    for (int y = 0; y < 900; ++y) {
        for (int x = 0; x < 1600; ++x) {
            picture.row(y)[x] = 0.4f + 0.04f * static_cast<float>((x * 7 + y * 13 + x * y) % 3);
        }
    }
    const Plane shapes = DrawnScene(500, 500, 2).plane();
    for (int y = 0; y < 500; ++y) {
        std::copy_n(shapes.row(y), 500, picture.row(y + 380) + 1050);
    }
    Team team(2, {});
    const Rect part = edgePart(picture, 512, 512, team);
    EXPECT_EQ(part.width, 512);
    EXPECT_EQ(part.height, 512);
    EXPECT_NEAR(part.x, 1044, 40);
    EXPECT_NEAR(part.y, 374, 40);
}

TEST(EdgePart, IsAllOfASmallPicture) {
    Team team(1, {});
    EXPECT_EQ(edgePart(Plane(90, 70), 90, 70, team), (Rect{0, 0, 90, 70}));
}

TEST(EdgePart, StaysInsideThePicture) {
    Plane picture(1030, 513);
    std::ranges::fill(picture.values(), 0.5f);
    for (int y = 0; y < 513; ++y) {
        std::fill_n(picture.row(y) + 1000, 30, 1.0f);
    }
    Team team(1, {});
    const Rect part = edgePart(picture, 512, 512, team);
    EXPECT_GT(part.right(), 1000);
    EXPECT_LE(part.right(), 1030);
    EXPECT_LE(part.bottom(), 513);
}

} // namespace
} // namespace restoration
