#include "restoration/blind/parts/EdgeSpectrum.h"

#include "restoration/failures/Failure.h"
#include "tests/restoration/blind/drawnPictures.h"
#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>
#include <random>

namespace restoration {
namespace {

WholeKernel point() {
    WholeKernel kernel(1);
    kernel.at(0, 0) = 1;
    return kernel;
}

/// Of variance 1/2 in both directions.
WholeKernel binomial() {
    WholeKernel kernel(3);
    kernel.weights = {1, 2, 1, 2, 4, 2, 1, 2, 1};
    return kernel;
}

/// 5 pixels from left to right: of variance 2 in this direction.
WholeKernel levelLine() {
    WholeKernel kernel(5);
    for (int x = 0; x < 5; ++x) {
        kernel.at(2, x) = 1;
    }
    return kernel;
}

EdgeSpectrum spectrumAfter(const WholeKernel& blur, std::uint32_t noise = 1) {
    return edgeSpectrum(blurredPicture(DrawnScene(320, 280, 31), blur, noise, 32), {});
}

/// White noise, of a deviation of `sigma` levels.
void addNoise(Plane& picture, float sigma) {
    std::mt19937 generator(5);
    for (float& value : picture.values()) {
        float sum = 0.0f;
        for (int i = 0; i < 12; ++i) {
            sum += static_cast<float>(generator() >> 8) / 16777216.0f;
        }
        value += (sum - 6.0f) * sigma / 255.0f;
    }
}

TEST(EdgeSpectrum, SharpEdgesHaveNoBlur) {
    const EdgeSpectrum edges = spectrumAfter(point());
    EXPECT_TRUE(edges.showsEdges);
    EXPECT_LT(edges.blurVariance, 0.3);
}

TEST(EdgeSpectrum, BlurAddsItsVariance) {
    const double added =
        spectrumAfter(binomial(), 0).blurVariance - spectrumAfter(point(), 0).blurVariance;
    EXPECT_NEAR(added, 0.6, 0.15);
}

TEST(EdgeSpectrum, FindsBlurInOneDirection) {
    EXPECT_GT(spectrumAfter(levelLine()).blurVariance, 0.6);
}

TEST(EdgeSpectrum, LevelAndUprightBlursAreAlike) {
    const Plane level = blurredPicture(DrawnScene(320, 280, 31), levelLine(), 1, 32);
    Plane upright(level.height(), level.width());
    for (int y = 0; y < level.height(); ++y) {
        for (int x = 0; x < level.width(); ++x) {
            upright.row(x)[y] = level.row(y)[x];
        }
    }
    EXPECT_NEAR(edgeSpectrum(upright, {}).blurVariance, edgeSpectrum(level, {}).blurVariance, 1e-3);
}

TEST(EdgeSpectrum, LargeBlursAreNotTakenForSharpness) {
    const EdgeSpectrum edges = spectrumAfter(discOfRadius3());
    EXPECT_TRUE(!edges.showsEdges || edges.blurVariance > 0.6) << edges.blurVariance;
}

TEST(EdgeSpectrum, SeesEdgesInBusyPictures) {
    // Every twelfth pixel of a scene: no square of the picture is free of edges.
    const Plane scene = DrawnScene(1920, 1920, 31).plane();
    Plane busy(160, 160);
    for (int y = 0; y < busy.height(); ++y) {
        for (int x = 0; x < busy.width(); ++x) {
            busy.row(y)[x] = scene.row(12 * y)[12 * x];
        }
    }
    addNoise(busy, 1.0f);
    const EdgeSpectrum edges = edgeSpectrum(busy, {});
    EXPECT_TRUE(edges.showsEdges);
    EXPECT_LT(edges.blurVariance, 0.47);
}

TEST(EdgeSpectrum, NoiseIsNotTakenForEdges) {
    Plane grey(300, 300);
    std::ranges::fill(grey.values(), 0.5f);
    EXPECT_FALSE(edgeSpectrum(grey, {}).showsEdges);
    addNoise(grey, 5.0f);
    EXPECT_FALSE(edgeSpectrum(grey, {}).showsEdges);
    Plane blurred = blurredPicture(DrawnScene(320, 280, 31), discOfRadius3(), 1, 32);
    addNoise(blurred, 20.0f);
    EXPECT_FALSE(edgeSpectrum(blurred, {}).showsEdges);
}

TEST(EdgeSpectrum, SmallPicturesShowNothing) {
    EXPECT_FALSE(edgeSpectrum(DrawnScene(300, 63, 3).plane(), {}).showsEdges);
    EXPECT_FALSE(edgeSpectrum(Plane(1, 1), {}).showsEdges);
}

TEST(EdgeSpectrum, IsTheSameOnEveryProcessorVariant) {
    const EdgeSpectrum first = spectrumAfter(binomial());
    vel::test::forEachTarget(
        [&] { EXPECT_EQ(spectrumAfter(binomial()).blurVariance, first.blurVariance); });
}

TEST(EdgeSpectrum, EndsWhenCancelled) {
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(edgeSpectrum(DrawnScene(100, 100, 3).plane(), cancellation), Failure);
}

} // namespace
} // namespace restoration
