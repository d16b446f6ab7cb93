#include "restoration/blind/candidates/contradictions.h"

#include "restoration/blind/refine/SpectralEvidence.h"
#include "restoration/blind/squares/Spread.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr double kNoise = 1.0 / (255.0 * 255.0);

bool isContradicted(const WholeKernel& blur, const SquareKernel& kernel) {
    const Cancellation cancellation;
    SpectralEvidence spectrum(blurredPicture(DrawnScene(300, 280, 3), blur, 1, 4), kNoise,
                              cancellation);
    Evidence evidence;
    evidence.width = widthOf(kernel);
    evidence.spectralMisfit = spectrum.misfit(kernel);
    return spectrumContradictsBlur(evidence);
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

TEST(SpectrumContradictsBlur, WhereThePictureIsSharp) {
    for (const WholeKernel& kernel : {hook(), line11(), square(7)}) {
        EXPECT_TRUE(isContradicted(none(), kernel.scaled()));
    }
}

TEST(SpectrumContradictsBlur, NotTheTrueKernel) {
    for (const WholeKernel& kernel : {hook(), line11(), square(7), square(3)}) {
        EXPECT_FALSE(isContradicted(kernel, kernel.scaled()));
    }
}

TEST(SpectrumContradictsBlur, NeverNarrowKernels) {
    EXPECT_FALSE(isContradicted(none(), square(3).scaled()));
}

/// A weight far away makes a kernel wide that hardly takes or adds any power.
TEST(SpectrumContradictsBlur, WhereAWideKernelExplainsNextToNothing) {
    SquareKernel kernel(31);
    kernel.at(15, 15) = 0.98;
    kernel.at(15, 0) = 0.01;
    kernel.at(15, 30) = 0.01;
    EXPECT_GT(Spread(kernel).largest(), 2.5);
    EXPECT_TRUE(isContradicted(none(), kernel));
}

Evidence wideKernel(double agreement, double overblur) {
    Evidence evidence;
    evidence.width = std::log(1.0 + 30.0);
    evidence.agreement = agreement;
    evidence.overblur = overblur;
    return evidence;
}

TEST(EdgesContradictBlur, WhereRunsDisagreeAndTheKernelTakesTooMuch) {
    EXPECT_TRUE(edgesContradictBlur(wideKernel(0.4, 1.4)));
    EXPECT_FALSE(edgesContradictBlur(wideKernel(0.9, 1.4)));
    EXPECT_TRUE(edgesContradictBlur(wideKernel(0.9, 3.0)));
    EXPECT_FALSE(edgesContradictBlur(wideKernel(0.4, 0.2)));
    Evidence narrow = wideKernel(0.4, 3.0);
    narrow.width = 0.5;
    EXPECT_FALSE(edgesContradictBlur(narrow));
}

TEST(ShowsPattern, WhereAWideKernelExplainsTheSpectrumTooWell) {
    Evidence evidence = wideKernel(0.9, 0.0);
    evidence.spectralMisfit = -0.1;
    EXPECT_FALSE(showsPattern(evidence));
    evidence.spectralMisfit = -0.4;
    EXPECT_TRUE(showsPattern(evidence));
    evidence.width = 0.5;
    EXPECT_FALSE(showsPattern(evidence));
}

TEST(EdgesContradictZeros, WhereSharpEdgesLackMuchLessThanTheKernelTakes) {
    Evidence evidence;
    evidence.edgeBlur = 0.2;
    evidence.overblur = 5.0;
    EXPECT_TRUE(edgesContradictZeros(evidence));
    Evidence blurred = evidence;
    blurred.edgeBlur = 1.0;
    EXPECT_FALSE(edgesContradictZeros(blurred));
    evidence.overblur = 1.0;
    EXPECT_FALSE(edgesContradictZeros(evidence));
}

} // namespace
} // namespace restoration
