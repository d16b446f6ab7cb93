#include "hosts/command/restoration/TileLimit.h"

#include "hosts/command/restoration/Restoration.h"
#include "hosts/command/terminal/Failure.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using velorn::largestKernelSide;

bool goOn(int, int) {
    return true;
}

TEST(TileLimit, FollowsTheTileOfTheLargerSide) {
    EXPECT_EQ(largestKernelSide(1, 1), 51);
    EXPECT_EQ(largestKernelSide(256, 10), 51);
    EXPECT_EQ(largestKernelSide(257, 10), 115);
    EXPECT_EQ(largestKernelSide(10, 512), 115);
    EXPECT_EQ(largestKernelSide(513, 10), 243);
    EXPECT_EQ(largestKernelSide(1024, 1024), 243);
    EXPECT_EQ(largestKernelSide(1025, 10), 115);
    EXPECT_EQ(largestKernelSide(100000, 100000), 115);
}

TEST(TileLimit, IsWhereTheLibraryBeginsToRefuse) {
    // Tiles advance by single pixels here: a picture of few rows keeps them few.
    const velorn::RgbPixels picture = vel::test::drawnPicture(60, 3);
    velorn::RestorationSettings settings;
    settings.lambda = 20000.0f;
    for (const float radius : {25.0f, 26.0f}) {
        const velorn::BlurKernel disc =
            velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, radius, 0.0f});
        if (disc.width <= largestKernelSide(60, 3)) {
            EXPECT_EQ(restore(picture, disc, settings, goOn).pixelCount(), picture.pixelCount());
        } else {
            EXPECT_THROW(restore(picture, disc, settings, goOn), velorn::Failure);
        }
    }
}

} // namespace
