#include "restoration/blind/candidates/KernelScore.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(KernelScore, TrueKernelBeatsOthers) {
    const Cancellation cancellation;
    const Plane picture = blurredPicture(DrawnScene(220, 200, 31), hook(), 1, 1);
    const KernelScorer scorer(picture, 10, cancellation);
    const double truth = scorer.of(hook().scaled(), cancellation).value;
    SquareKernel turned = hook().scaled();
    std::ranges::reverse(turned.values);
    EXPECT_LT(truth, scorer.of(turned, cancellation).value);
    EXPECT_LT(truth, scorer.of(line11().scaled(), cancellation).value);
    EXPECT_LT(truth, scorer.of(discOfRadius3().scaled(), cancellation).value);
}

TEST(KernelScore, ResidualOfTheTrueKernelIsAboutTheNoise) {
    const Cancellation cancellation;
    const Plane picture = blurredPicture(DrawnScene(220, 200, 32), line11(), 3, 1);
    const KernelScorer scorer(picture, 10, cancellation);
    // Uniform noise of -3..3 levels has the variance 4.
    EXPECT_NEAR(scorer.of(line11().scaled(), cancellation).residual, 4.0, 1.0);
    EXPECT_GT(scorer.of(discOfRadius3().scaled(), cancellation).residual, 8.0);
}

} // namespace
} // namespace restoration
