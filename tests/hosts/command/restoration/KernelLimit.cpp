#include "hosts/command/restoration/KernelLimit.h"

#include "hosts/command/restoration/Restoration.h"
#include "hosts/command/terminal/Failure.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using velorn::largestKernelSide;

bool proceed(int, int) {
    return true;
}

TEST(KernelLimit, LimitFollowsTheTileForTheLargerSide) {
    EXPECT_EQ(largestKernelSide(1, 1), 51);
    EXPECT_EQ(largestKernelSide(256, 10), 51);
    EXPECT_EQ(largestKernelSide(257, 10), 115);
    EXPECT_EQ(largestKernelSide(10, 512), 115);
    EXPECT_EQ(largestKernelSide(513, 10), 243);
    EXPECT_EQ(largestKernelSide(1024, 1024), 243);
    EXPECT_EQ(largestKernelSide(1025, 10), 115);
    EXPECT_EQ(largestKernelSide(100000, 100000), 115);
}

TEST(KernelLimit, LibraryAcceptsKernelsUpToTheLimitOnly) {
    // Near the limit, tiles advance by single pixels: a picture of few rows keeps their number low.
    const velorn::RgbPixels picture = vel::test::drawnPicture(60, 3);
    velorn::RestorationSettings settings;
    settings.lambda = 20000.0f;
    const auto restoredWith = [&](float radius, int side) {
        const auto disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, radius, 0.0f});
        EXPECT_EQ(disc.width, side);
        return restore(picture, disc, settings, proceed);
    };
    ASSERT_EQ(largestKernelSide(60, 3), 51);
    EXPECT_EQ(restoredWith(25.0f, 51).pixelCount(), picture.pixelCount());
    EXPECT_THROW(restoredWith(26.0f, 53), velorn::Failure);
}

TEST(KernelLimit, LimitIsThatOfTheLibraryForEverySideOfItsTiles) {
    velorn::RestorationSettings settings;
    settings.deconvolve = false; // the size of the kernel counts nevertheless
    for (const int width : {60, 300, 600}) {
        const velorn::RgbPixels picture = vel::test::drawnPicture(width, 3);
        const auto restoreWith = [&](int side) {
            const auto disc = velorn::makeKernel(
                {velorn::AnalyticBlur::Shape::Disc, static_cast<float>(side / 2), 0.0f});
            EXPECT_EQ(disc.width, side);
            // Cancels in the third tile: a plan with gaps fails at the second.
            int calls = 0;
            restore(picture, disc, settings, [&](int, int) { return ++calls < 5; });
            return calls;
        };
        const int largest = largestKernelSide(width, 3);
        EXPECT_EQ(restoreWith(largest), 5) << width;
        EXPECT_THROW(restoreWith(largest + 2), velorn::Failure) << width;
    }
}

TEST(KernelLimit, KernelsBeyondTheLimitAreRefusedWithTheLimit) {
    EXPECT_NO_THROW(velorn::checkFits({51, 3}, 60, 40));
    try {
        velorn::checkFits({3, 53}, 60, 40);
        FAIL() << "no failure";
    } catch (const velorn::Failure& failure) {
        EXPECT_STREQ(failure.what(),
                     "a kernel of 3 by 53 is too large for this picture; the limit is 51 by 51");
    }
}

} // namespace
