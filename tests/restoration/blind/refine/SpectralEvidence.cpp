#include "restoration/blind/refine/SpectralEvidence.h"

#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"
#include "restoration/failures/Failure.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr double kNoise = 1.0 / (255.0 * 255.0);

Plane pictureWith(const WholeKernel& blur) {
    return blurredPicture(DrawnScene(300, 280, 3), blur, 1, 4);
}

SquareKernel point() {
    SquareKernel kernel(3);
    kernel.at(1, 1) = 1.0;
    return kernel;
}

/// Every weight is the mean of three in a row.
SquareKernel smeared(const SquareKernel& kernel) {
    const SquareKernel wide = withSide(kernel, kernel.side + 4);
    SquareKernel result(wide.side);
    for (int y = 0; y < wide.side; ++y) {
        for (int x = 1; x + 1 < wide.side; ++x) {
            result.at(y, x) = (wide.at(y, x - 1) + wide.at(y, x) + wide.at(y, x + 1)) / 3.0;
        }
    }
    return result;
}

TEST(SpectralEvidence, PrefersTheTrueKernelToWiderOnesAndToNone) {
    const Cancellation cancellation;
    for (const WholeKernel& blur : {hook(), line11(), discOfRadius3()}) {
        SpectralEvidence evidence(pictureWith(blur), kNoise, cancellation);
        const double truth = evidence.misfit(blur.scaled());
        EXPECT_LT(truth, 0.0);
        EXPECT_LT(truth, evidence.misfit(smeared(blur.scaled())));
        EXPECT_NEAR(evidence.misfit(point()), 0.0, 1e-6);
    }
}

TEST(SpectralEvidence, IsTheSameForARotatedKernel) {
    const Cancellation cancellation;
    SpectralEvidence evidence(pictureWith(hook()), kNoise, cancellation);
    SquareKernel rotated = hook().scaled();
    std::ranges::reverse(rotated.values);
    EXPECT_NEAR(evidence.misfit(rotated), evidence.misfit(hook().scaled()), 1e-6);
}

TEST(SpectralEvidence, ImprovesAKernelThatIsTooWide) {
    const Cancellation cancellation;
    for (const WholeKernel& blur : {hook(), line11(), discOfRadius3()}) {
        SpectralEvidence evidence(pictureWith(blur), kNoise, cancellation);
        const SquareKernel start = smeared(blur.scaled());
        SquareKernel kernel = start;
        evidence.improve(kernel);
        EXPECT_LT(evidence.misfit(kernel), evidence.misfit(start));
        EXPECT_GT(likeness(kernel, blur.scaled()), likeness(start, blur.scaled()));
        EXPECT_NEAR(kernel.sum(), 1.0, 1e-9);
        EXPECT_GE(*std::ranges::min_element(kernel.values), 0.0);
    }
}

TEST(SpectralEvidence, FlatPicturesDoNoHarm) {
    const Cancellation cancellation;
    Plane grey(64, 48);
    std::ranges::fill(grey.values(), 0.5f);
    SpectralEvidence evidence(grey, kNoise, cancellation);
    SquareKernel kernel = hook().scaled();
    evidence.improve(kernel);
    EXPECT_NEAR(kernel.sum(), 1.0, 1e-9);
}

TEST(SpectralEvidence, EndsWhenCancelled) {
    Cancellation cancellation;
    cancellation.request();
    const Plane picture = pictureWith(hook());
    EXPECT_THROW(SpectralEvidence(picture, kNoise, cancellation), Failure);
}

} // namespace
} // namespace restoration
