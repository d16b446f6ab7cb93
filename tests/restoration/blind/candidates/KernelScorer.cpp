#include "restoration/blind/candidates/KernelScorer.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(KernelScorer, TrueKernelBeatsOthers) {
    const Cancellation cancellation;
    const Plane picture = blurredPicture(DrawnScene(220, 200, 31), hook(), 1, 1);
    const KernelScorer scorer(picture, 10, 1.0, cancellation);
    const double truth = scoreOf(scorer.of(hook().scaled(), cancellation));
    SquareKernel turned = hook().scaled();
    std::ranges::reverse(turned.values);
    EXPECT_LT(truth, scoreOf(scorer.of(turned, cancellation)));
    EXPECT_LT(truth, scoreOf(scorer.of(line11().scaled(), cancellation)));
    EXPECT_LT(truth, scoreOf(scorer.of(discOfRadius3().scaled(), cancellation)));
}

TEST(KernelScorer, ResidualOfTheTrueKernelIsAboutTheNoise) {
    const Cancellation cancellation;
    const Plane picture = blurredPicture(DrawnScene(220, 200, 32), line11(), 3, 1);
    const KernelScorer scorer(picture, 10, 1.0, cancellation);
    // Uniform noise of -3..3 levels has the variance 4.
    const auto residual = [&](const WholeKernel& kernel) {
        return std::exp(scorer.of(kernel.scaled(), cancellation).residual);
    };
    EXPECT_NEAR(residual(line11()), 4.0, 1.0);
    EXPECT_GT(residual(discOfRadius3()), 8.0);
}

} // namespace
} // namespace restoration
