#include "restoration/blind/parts/sharpestFirst.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

WholeKernel square3() {
    WholeKernel kernel(3);
    kernel.weights = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    return kernel;
}

WholeKernel point() {
    WholeKernel kernel(1);
    kernel.at(0, 0) = 1;
    return kernel;
}

constexpr Rect kLeft{0, 0, 300, 260};
constexpr Rect kMiddle{300, 0, 300, 260};
constexpr Rect kRight{600, 0, 300, 260};

/// Scenes side by side.
Plane scenes(const WholeKernel& left, const WholeKernel& middle, const WholeKernel& right) {
    Plane picture(900, 260);
    int x = 0;
    for (const WholeKernel& blur : {left, middle, right}) {
        const Plane scene = blurredPicture(DrawnScene(310, 270, 31), blur, 1, 32);
        for (int y = 0; y < 260; ++y) {
            std::copy_n(scene.row(y), 300, picture.row(y) + x);
        }
        x += 300;
    }
    return picture;
}

TEST(SharpestFirst, PutsTheSharpestPartFirst) {
    Team team(2, {});
    const Plane picture = scenes(discOfRadius3(), square3(), point());
    EXPECT_EQ(sharpestFirst(picture, {kLeft, kMiddle, kRight}, team),
              (std::vector<Rect>{kRight, kLeft, kMiddle}));
    EXPECT_EQ(sharpestFirst(picture, {kLeft, kMiddle}, team), (std::vector<Rect>{kMiddle, kLeft}));
}

TEST(SharpestFirst, KeepsPartsThatAreAlike) {
    Team team(1, {});
    const Plane picture = scenes(square3(), square3(), discOfRadius3());
    EXPECT_EQ(sharpestFirst(picture, {kMiddle, kLeft, kRight}, team),
              (std::vector<Rect>{kMiddle, kLeft, kRight}));
}

TEST(SharpestFirst, TakesNoPartWithoutEdgesForSharp) {
    Team team(1, {});
    Plane picture = scenes(square3(), point(), point());
    for (int y = 0; y < 260; ++y) {
        std::fill_n(picture.row(y) + 300, 300, 0.5f);
    }
    EXPECT_EQ(sharpestFirst(picture, {kLeft, kMiddle}, team), (std::vector<Rect>{kLeft, kMiddle}));
}

} // namespace
} // namespace restoration
