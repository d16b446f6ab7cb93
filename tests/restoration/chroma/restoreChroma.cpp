#include "restoration/chroma/restoreChroma.h"

#include "noisyScene.h"
#include "restoration/chroma/ChromaRisk.h"
#include "restoration/deconvolution/deconvolveQuadratic.h"
#include "tests/restoration/deconvolution/CircularScene.h"
#include "tests/support/EachTarget.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace restoration {
namespace {

using test::blurred;
using test::circularScene;
using test::copyOf;
using test::distance;
using test::largestDifference;
using test::unevenKernel;

Plane restored(const Plane& y, const BlurSpectrum& blur, const ChromaPrior& prior) {
    TileScratch scratch(blur.side());
    Plane x(blur.side(), blur.side());
    restoreChroma(y, blur, prior, x, scratch, Cancellation());
    return x;
}

Plane quadratic(const Plane& y, const BlurSpectrum& blur, float weight, const Plane* mean) {
    TileScratch scratch(blur.side());
    Plane x(blur.side(), blur.side());
    deconvolveQuadratic(y, blur, weight, mean, x, scratch, Cancellation());
    return x;
}

ChromaPrior priorFor(const Plane& y, const BlurSpectrum& blur, double weight, double deviation) {
    TileScratch scratch(blur.side());
    ChromaRisk risk;
    risk.add(y, 1, blur, scratch, Cancellation());
    return {static_cast<float>(weight),
            static_cast<float>(risk.gradientNoise(weight, deviation * deviation))};
}

/// Without noise the gain is 1, and each pass draws the gradients towards the previous result.
TEST(RestoreChroma, WithoutNoiseItRepeatsTheQuadraticRestoration) {
    const Kernel kernel = unevenKernel(5, 7);
    const BlurSpectrum blur(kernel, 64);
    const Plane y = blurred(circularScene(64), kernel);
    const Plane x = restored(y, blur, {0.05f, 0.0f});
    Plane expected = quadratic(y, blur, 0.05f, nullptr);
    for (const float weight : {0.05f, 0.05f, 0.15f}) {
        expected = quadratic(y, blur, weight, &expected);
    }
    EXPECT_LT(largestDifference(x, expected), 2e-5);
    EXPECT_GT(distance(x, quadratic(y, blur, 0.05f, nullptr)), 1e-3);
}

/// With very much noise the gain is 0, and the last pass alone remains.
TEST(RestoreChroma, WhereAllIsNoiseItIsTheQuadraticRestorationOfTheLastPass) {
    const Kernel kernel = unevenKernel(5, 7);
    const BlurSpectrum blur(kernel, 64);
    const Plane y = blurred(circularScene(64), kernel);
    const Plane x = restored(y, blur, {0.05f, 1e9f});
    EXPECT_LT(largestDifference(x, quadratic(y, blur, 0.15f, nullptr)), 2e-5);
}

TEST(RestoreChroma, IsNearerToTheSceneThanTheQuadraticRestorationAndTheBlurredPlane) {
    const Kernel kernel = unevenKernel(7, 7);
    const BlurSpectrum blur(kernel, 256);
    const Plane scene = circularScene(256);
    Plane y = blurred(scene, kernel);
    test::addNoise(y, 0.01);
    for (const double weight : {0.02, 0.05, 0.1}) {
        const Plane plain = quadratic(y, blur, static_cast<float>(weight), nullptr);
        const Plane x = restored(y, blur, priorFor(y, blur, weight, 0.01));
        EXPECT_LT(distance(x, scene), 0.95 * distance(plain, scene)) << weight;
        EXPECT_LT(distance(x, scene), distance(y, scene)) << weight;
    }
}

TEST(RestoreChroma, GreyStaysGrey) {
    const BlurSpectrum blur(unevenKernel(5, 7), 64);
    const Plane x = restored(test::noisePlane(64, 0), blur, {0.05f, 1e-5f});
    for (const float value : x.values()) {
        ASSERT_EQ(value, 0.0f);
    }
}

TEST(RestoreChroma, ShiftOfTheTileShiftsTheResult) {
    constexpr int kSide = 64;
    const Kernel kernel = unevenKernel(5, 3);
    const BlurSpectrum blur(kernel, kSide);
    Plane y = blurred(circularScene(kSide), kernel);
    test::addNoise(y, 0.01);
    Plane shifted(kSide, kSide);
    for (int row = 0; row < kSide; ++row) {
        for (int column = 0; column < kSide; ++column) {
            shifted.row((row + 9) % kSide)[(column + 21) % kSide] = y.row(row)[column];
        }
    }
    const ChromaPrior prior{0.05f, 1e-4f};
    const Plane x = restored(y, blur, prior);
    const Plane moved = restored(shifted, blur, prior);
    for (int row = 0; row < kSide; ++row) {
        for (int column = 0; column < kSide; ++column) {
            ASSERT_NEAR(static_cast<double>(x.row(row)[column]),
                        static_cast<double>(moved.row((row + 9) % kSide)[(column + 21) % kSide]),
                        1e-5);
        }
    }
}

TEST(RestoreChroma, TheResultMayReplaceItsSource) {
    const Kernel kernel = unevenKernel(5, 3);
    const BlurSpectrum blur(kernel, 64);
    Plane y = blurred(circularScene(64), kernel);
    const Plane x = restored(y, blur, {0.05f, 1e-4f});
    TileScratch scratch(64);
    restoreChroma(y, blur, {0.05f, 1e-4f}, y, scratch, Cancellation());
    EXPECT_EQ(largestDifference(x, y), 0.0);
}

TEST(RestoreChroma, AllVariantsGiveTheSameBits) {
    const Kernel kernel = unevenKernel(5, 7);
    Plane y = blurred(circularScene(64), kernel);
    test::addNoise(y, 0.01);
    std::vector<float> expected;
    vel::test::forEachTarget([&] {
        const Plane x = restored(y, BlurSpectrum(kernel, 64), {0.05f, 1e-4f});
        const std::vector<float> found(x.values().begin(), x.values().end());
        if (expected.empty()) {
            expected = found;
        }
        EXPECT_EQ(found, expected);
    });
}

TEST(RestoreChroma, InfinitiesAndNanDoNotStopIt) {
    const BlurSpectrum blur(unevenKernel(5, 7), 64);
    for (const float value :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          std::numeric_limits<float>::max()}) {
        Plane y = circularScene(64);
        y.row(3)[5] = value;
        EXPECT_EQ(restored(y, blur, {0.05f, 1e-4f}).width(), 64);
    }
}

TEST(RestoreChroma, CancelledCallFails) {
    const BlurSpectrum blur(unevenKernel(5, 7), 64);
    Plane y = circularScene(64);
    TileScratch scratch(64);
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(restoreChroma(y, blur, {0.05f, 1e-4f}, y, scratch, cancellation), Failure);
}

} // namespace
} // namespace restoration
