#include "restoration/blind/refine/contradictsBlur.h"

#include "restoration/blind/squares/Spread.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr double kNoise = 1.0 / (255.0 * 255.0);

bool isContradicted(const WholeKernel& blur, const SquareKernel& kernel) {
    const Cancellation cancellation;
    SpectralEvidence evidence(blurredPicture(DrawnScene(300, 280, 3), blur, 1, 4), kNoise,
                              cancellation);
    return contradictsBlur(evidence, kernel);
}

/// All weights alike.
WholeKernel square(int side) {
    WholeKernel kernel(side);
    std::ranges::fill(kernel.weights, 1);
    return kernel;
}

WholeKernel none() {
    return square(1);
}

TEST(ContradictsBlur, WhereThePictureIsSharp) {
    for (const WholeKernel& kernel : {hook(), line11(), square(7)}) {
        EXPECT_TRUE(isContradicted(none(), kernel.scaled()));
    }
}

TEST(ContradictsBlur, NotTheTrueKernel) {
    for (const WholeKernel& kernel : {hook(), line11(), square(7), square(3)}) {
        EXPECT_FALSE(isContradicted(kernel, kernel.scaled()));
    }
}

TEST(ContradictsBlur, NeverNarrowKernels) {
    EXPECT_FALSE(isContradicted(none(), square(3).scaled()));
}

/// A weight far away makes a kernel wide that hardly takes or adds any power.
TEST(ContradictsBlur, WhereAWideKernelExplainsNextToNothing) {
    SquareKernel kernel(31);
    kernel.at(15, 15) = 0.98;
    kernel.at(15, 0) = 0.01;
    kernel.at(15, 30) = 0.01;
    EXPECT_GT(Spread(kernel).largest(), kNarrowVariance);
    EXPECT_TRUE(isContradicted(none(), kernel));
}

} // namespace
} // namespace restoration
