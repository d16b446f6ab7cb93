#include "restoration/blind/parts/edgeParts.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(EdgeParts, HoldsEdgesRatherThanTexture) {
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
    const Rect part = edgeParts(picture, 512, 512, 1, team).front();
    EXPECT_EQ(part.width, 512);
    EXPECT_EQ(part.height, 512);
    EXPECT_NEAR(part.x, 1044, 40);
    EXPECT_NEAR(part.y, 374, 40);
}

TEST(EdgeParts, IsAllOfASmallPicture) {
    Team team(1, {});
    EXPECT_EQ(edgeParts(Plane(90, 70), 90, 70, 3, team), (std::vector<Rect>{{0, 0, 90, 70}}));
}

TEST(EdgeParts, StaysInsideThePicture) {
    Plane picture(1030, 513);
    std::ranges::fill(picture.values(), 0.5f);
    for (int y = 0; y < 513; ++y) {
        std::fill_n(picture.row(y) + 1000, 30, 1.0f);
    }
    Team team(1, {});
    const Rect part = edgeParts(picture, 512, 512, 1, team).front();
    EXPECT_GT(part.right(), 1000);
    EXPECT_LE(part.right(), 1030);
    EXPECT_LE(part.bottom(), 513);
}

/// Shapes at the left and at the right of a grey picture.
Plane twoScenes(const Plane& left, const Plane& right) {
    Plane picture(1600, 600);
    std::ranges::fill(picture.values(), 0.5f);
    for (int y = 0; y < 500; ++y) {
        std::copy_n(left.row(y), 500, picture.row(y + 40) + 50);
        std::copy_n(right.row(y), 500, picture.row(y + 40) + 1050);
    }
    return picture;
}

TEST(EdgeParts, FindsSeveralParts) {
    const Plane picture =
        twoScenes(DrawnScene(500, 500, 2).plane(), DrawnScene(500, 500, 3).plane());
    Team team(2, {});
    std::vector<Rect> parts = edgeParts(picture, 512, 512, 2, team);
    ASSERT_EQ(parts.size(), 2u);
    std::ranges::sort(parts, {}, &Rect::x);
    EXPECT_NEAR(parts[0].x, 44, 40);
    EXPECT_NEAR(parts[1].x, 1044, 40);
}

TEST(EdgeParts, LeavesOutPartsWithFewEdges) {
    Plane grey(500, 500);
    std::ranges::fill(grey.values(), 0.5f);
    Team team(1, {});
    EXPECT_EQ(edgeParts(twoScenes(DrawnScene(500, 500, 2).plane(), grey), 512, 512, 3, team).size(),
              1u);
}

} // namespace
} // namespace restoration
