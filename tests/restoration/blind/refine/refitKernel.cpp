#include "restoration/blind/refine/refitKernel.h"

#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"
#include "restoration/failures/Failure.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr double kNoise = 1.0 / (255.0 * 255.0);

std::optional<SquareKernel> refitted(const Plane& picture, const SquareKernel& found,
                                     KernelBounds bounds = {21, 21}) {
    ProgressMeter progress;
    const Cancellation cancellation;
    return refitKernel(picture, kNoise, found, bounds, progress, cancellation);
}

Plane pictureWith(const WholeKernel& blur, std::uint32_t seed) {
    return blurredPicture(DrawnScene(240, 220, seed), blur, 1, seed + 1);
}

/// `kernel` amid zeros, moved by half a pixel to the right and a quarter down.
SquareKernel displaced(const SquareKernel& kernel) {
    const SquareKernel wide = withSide(kernel, kernel.side + 4);
    SquareKernel result(wide.side);
    for (int y = 1; y < wide.side; ++y) {
        for (int x = 1; x < wide.side; ++x) {
            result.at(y, x) = 0.75 * 0.5 * (wide.at(y, x) + wide.at(y, x - 1)) +
                              0.25 * 0.5 * (wide.at(y - 1, x) + wide.at(y - 1, x - 1));
        }
    }
    return result;
}

TEST(RefitKernel, MovesADisplacedKernelTowardsTheTruth) {
    for (const WholeKernel& blur : {line11(), discOfRadius3()}) {
        const SquareKernel truth = blur.scaled();
        const SquareKernel start = displaced(truth);
        const auto kernel = refitted(pictureWith(blur, 3), start);
        ASSERT_TRUE(kernel);
        EXPECT_LT(1.0 - likeness(*kernel, truth), 0.7 * (1.0 - likeness(start, truth)));
    }
}

TEST(RefitKernel, CentresTheMassOfAKernelBetweenPixels) {
    const SquareKernel start = displaced(hook().scaled());
    const auto kernel = refitted(pictureWith(hook(), 3), start);
    ASSERT_TRUE(kernel);
    double right = 0.0;
    double down = 0.0;
    for (int y = 0; y < kernel->side; ++y) {
        for (int x = 0; x < kernel->side; ++x) {
            right += (x - kernel->radius()) * kernel->at(y, x);
            down += (y - kernel->radius()) * kernel->at(y, x);
        }
    }
    EXPECT_NEAR(right, 0.0, 0.2);
    EXPECT_NEAR(down, 0.0, 0.2);
}

TEST(RefitKernel, KeepsAnExactKernel) {
    for (const WholeKernel& blur : {line11(), discOfRadius3()}) {
        const auto kernel = refitted(pictureWith(blur, 5), blur.scaled());
        ASSERT_TRUE(kernel);
        EXPECT_GT(likeness(*kernel, blur.scaled()), 0.97);
    }
}

TEST(RefitKernel, SumsToOneWithoutNegativeWeightsInsideTheBounds) {
    const auto kernel = refitted(pictureWith(line11(), 7), line11().scaled(), {15, 7});
    ASSERT_TRUE(kernel);
    EXPECT_LE(kernel->side, 15);
    EXPECT_NEAR(kernel->sum(), 1.0, 1e-9);
    for (int y = 0; y < kernel->side; ++y) {
        for (int x = 0; x < kernel->side; ++x) {
            ASSERT_GE(kernel->at(y, x), 0.0);
            ASSERT_TRUE(std::abs(y - kernel->radius()) <= 3 || kernel->at(y, x) == 0.0);
        }
    }
}

TEST(RefitKernel, APictureWithoutEdgesGivesNothing) {
    Plane grey(200, 180);
    std::ranges::fill(grey.values(), 0.5f);
    EXPECT_FALSE(refitted(grey, line11().scaled()));
}

TEST(RefitKernel, AdvancesByItsUnits) {
    ProgressMeter progress;
    progress.beginPhase(1.0, kRefitUnits);
    const Cancellation cancellation;
    const Plane picture = pictureWith(hook(), 3);
    refitKernel(picture, kNoise, hook().scaled(), {21, 21}, progress, cancellation);
    EXPECT_DOUBLE_EQ(progress.done(), 1.0);
}

TEST(RefitKernel, EndsWhenCancelled) {
    ProgressMeter progress;
    Cancellation cancellation;
    cancellation.request();
    const Plane picture = pictureWith(hook(), 3);
    EXPECT_THROW(refitKernel(picture, kNoise, hook().scaled(), {21, 21}, progress, cancellation),
                 Failure);
}

} // namespace
} // namespace restoration
