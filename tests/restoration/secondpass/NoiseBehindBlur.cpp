#include "restoration/secondpass/NoiseBehindBlur.h"

#include "restoration/kernels/analyticKernel.h"
#include "tests/restoration/deconvolution/CircularScene.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace restoration {
namespace {

constexpr int kPlaneSide = 384;

/// A picture full of texture: sums of moving averages of random numbers, of several lengths.
Plane texture() {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> values(-0.5f, 0.5f);
    Plane plane(kPlaneSide, kPlaneSide);
    std::ranges::fill(plane.values(), 0.5f);
    for (const int length : {1, 3, 9, 27}) {
        Plane layer(kPlaneSide, kPlaneSide);
        std::ranges::generate(layer.values(), [&] { return values(random); });
        const std::size_t count =
            static_cast<std::size_t>(length) * static_cast<std::size_t>(length);
        const Plane soft = test::blurred(
            layer, {length, length, std::vector<float>(count, 1.0f / static_cast<float>(count))});
        for (std::size_t i = 0; i < plane.values().size(); ++i) {
            plane.values()[i] += 0.25f * static_cast<float>(length) * soft.values()[i];
        }
    }
    return plane;
}

const Plane& sharpTexture() {
    static const Plane plane = texture();
    return plane;
}

void addWhiteNoise(Plane& plane, float deviation) {
    std::mt19937 random(8);
    std::normal_distribution<float> error(0.0f, 1.0f);
    for (float& value : plane.values()) {
        value += deviation * error(random);
    }
}

void addSquares(const Plane& plane, NoiseBehindBlur& noise) {
    for (int y = 0; y + NoiseBehindBlur::kSide <= kPlaneSide; y += NoiseBehindBlur::kSide / 2) {
        for (int x = 0; x + NoiseBehindBlur::kSide <= kPlaneSide; x += NoiseBehindBlur::kSide / 2) {
            noise.add(plane, x, y);
        }
    }
}

std::optional<float> measured(const Plane& plane, const Kernel& kernel) {
    NoiseBehindBlur noise(kernel);
    addSquares(plane, noise);
    return noise.deviation();
}

const Kernel& disc() {
    static const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
    return kernel;
}

TEST(NoiseBehindBlur, FindsTheNoiseOfBlurredTexture) {
    for (const Kernel& kernel : {disc(), analyticKernel(VELORN_BLUR_MOTION, 13.0f, 30.0f),
                                 analyticKernel(VELORN_BLUR_GAUSSIAN, 1.5f, 0.0f)}) {
        const Plane soft = test::blurred(sharpTexture(), kernel);
        for (const float deviation : {0.002f, 0.01f}) {
            Plane seen = test::copyOf(soft);
            addWhiteNoise(seen, deviation);
            const std::optional<float> found = measured(seen, kernel);
            ASSERT_TRUE(found);
            EXPECT_NEAR(*found, deviation, 0.25f * deviation);
        }
    }
}

TEST(NoiseBehindBlur, CorrelatedNoiseCountsWhereItIsStrong) {
    Plane zero(kPlaneSide, kPlaneSide);
    std::ranges::fill(zero.values(), 0.0f);
    Plane white = test::copyOf(zero);
    addWhiteNoise(white, 0.01f);
    const Plane smooth = test::blurred(
        white, {3, 3, {0.0625f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.0625f}});
    Plane seen = test::blurred(sharpTexture(), disc());
    for (std::size_t i = 0; i < seen.values().size(); ++i) {
        seen.values()[i] += smooth.values()[i];
    }
    const std::optional<float> found = measured(seen, disc());
    ASSERT_TRUE(found);
    EXPECT_GT(static_cast<double>(*found), 1.3 * test::distance(smooth, zero));
    EXPECT_LT(*found, 0.01f);
}

TEST(NoiseBehindBlur, KernelThatDoesNotFitRaisesTheResult) {
    Plane seen = test::blurred(sharpTexture(), disc());
    addWhiteNoise(seen, 0.002f);
    const std::optional<float> found = measured(seen, analyticKernel(VELORN_BLUR_DISC, 3.4f, 0.0f));
    ASSERT_TRUE(found);
    EXPECT_GT(*found, 0.004f);
}

TEST(NoiseBehindBlur, KernelThatRemovesNothingTellsNothing) {
    EXPECT_FALSE(measured(sharpTexture(), Kernel{1, 1, {1.0f}}));
}

TEST(NoiseBehindBlur, WithoutSquaresNothingIsKnown) {
    EXPECT_FALSE(NoiseBehindBlur(disc()).deviation());
}

TEST(NoiseBehindBlur, FlatAndImpossiblePlanesTellNothing) {
    Plane plane(kPlaneSide, kPlaneSide);
    std::ranges::fill(plane.values(), 0.0f);
    EXPECT_FALSE(measured(plane, disc()));
    std::ranges::fill(plane.values(), std::numeric_limits<float>::quiet_NaN());
    EXPECT_FALSE(measured(plane, disc()));
}

} // namespace
} // namespace restoration
