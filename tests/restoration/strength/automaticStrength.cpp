#include "restoration/strength/automaticStrength.h"

#include "restoration/failures/Failure.h"
#include "restoration/kernels/analyticKernel.h"
#include "restoration/strength/strengthForNoise.h"
#include "tests/restoration/strength/blurredPicture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

using test::BlurredPicture;

constexpr float kAlpha = 0.8f;
constexpr int kSide = 400;

const Kernel& disc() {
    static const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 2.5f, 0.0f);
    return kernel;
}

NoiseLevels noiseLevels(float noise) {
    NoiseLevels levels;
    levels.luminance = noise;
    levels.channels.fill(noise);
    return levels;
}

float strengthOf(const BlurredPicture& picture, const NoiseLevels& noise,
                 const Kernel& kernel = disc(), int threads = 2) {
    Team team(threads, {});
    const Kernel* kernels[] = {&kernel};
    return automaticStrength(picture.reader(), {}, kernels, noise, kAlpha, team);
}

/// Decibels that `strength` loses against the best of the strengths at and below the highest one.
double lossOf(const BlurredPicture& picture, float noise, float strength) {
    double best = 0.0;
    for (float other = strengthForNoise(noise, kAlpha); other > 50.0f; other /= 1.5f) {
        best = std::max(best, picture.decibels(disc(), other, kAlpha));
    }
    return best - picture.decibels(disc(), strength, kAlpha);
}

TEST(AutomaticStrength, IsWithinThreeTenthsOfADecibelOfTheBest) {
    for (const float noise : {1.0f, 3.0f}) {
        const BlurredPicture edges(test::leavesScene(kSide), disc(), {double{noise}});
        EXPECT_LT(lossOf(edges, noise, strengthOf(edges, noiseLevels(noise))), 0.3) << noise;
        const BlurredPicture soft(test::softScene(kSide), disc(), {double{noise}});
        EXPECT_LT(lossOf(soft, noise, strengthOf(soft, noiseLevels(noise))), 0.3) << noise;
    }
}

TEST(AutomaticStrength, OfSoftPicturesIsBelowTheOneForTheirNoise) {
    const BlurredPicture soft(test::softScene(kSide), disc(), {3.0});
    const float strength = strengthOf(soft, noiseLevels(3.0f));
    EXPECT_LT(strength, strengthForNoise(3.0f, kAlpha) / 2.0f);
}

TEST(AutomaticStrength, FallsAsTheNoiseRises) {
    float last = 1e9f;
    for (const float noise : {0.5f, 1.0f, 2.0f, 4.0f, 8.0f}) {
        const BlurredPicture picture(test::leavesScene(kSide), disc(), {double{noise}});
        const float strength = strengthOf(picture, noiseLevels(noise));
        EXPECT_LT(strength, last) << noise;
        last = strength;
    }
}

TEST(AutomaticStrength, BearsNoiseThatIsUnderestimated) {
    const BlurredPicture soft(test::softScene(kSide), disc(), {3.0});
    EXPECT_LT(lossOf(soft, 3.0f, strengthOf(soft, noiseLevels(1.5f))), 0.5);
}

TEST(AutomaticStrength, DoesNotDependOnTheNumberOfThreads) {
    const BlurredPicture picture(test::leavesScene(kSide), disc(), {2.0, 1.0});
    const float expected = strengthOf(picture, noiseLevels(2.0f), disc(), 1);
    for (const int threads : {2, 3, 7}) {
        EXPECT_EQ(strengthOf(picture, noiseLevels(2.0f), disc(), threads), expected);
    }
}

TEST(AutomaticStrength, OfEqualChannelsIsThatOfTheirNoise) {
    const BlurredPicture one(test::leavesScene(kSide), disc(), {3.0});
    const BlurredPicture two(test::leavesScene(kSide), disc(), {3.0, 3.0});
    const float single = strengthOf(one, noiseLevels(3.0f));
    const float joint = strengthOf(two, noiseLevels(3.0f));
    EXPECT_LT(std::max(single, joint) / std::min(single, joint), 1.3f);
}

TEST(AutomaticStrength, OfACompressedPictureIsLower) {
    const BlurredPicture picture(test::leavesScene(kSide), disc(), {2.0});
    NoiseLevels noise = noiseLevels(2.0f);
    const float independent = strengthOf(picture, noise);
    noise.isCompressed = true;
    EXPECT_LT(strengthOf(picture, noise), independent);
}

TEST(AutomaticStrength, IsAtMostTheOneThatTheKernelIsTrustedWith) {
    const BlurredPicture picture(test::leavesScene(kSide), disc(), {0.5});
    Kernel found = disc();
    found.trust.strongest = 3000.0f;
    EXPECT_GT(strengthOf(picture, noiseLevels(0.5f)), 3000.0f);
    EXPECT_LE(strengthOf(picture, noiseLevels(0.5f), found), 3000.0f);
}

TEST(AutomaticStrength, ExistsForConstantPicturesAndWithoutNoise) {
    Plane grey(64, 64);
    std::ranges::fill(grey.values(), 0.5f);
    const BlurredPicture constant(std::move(grey), disc(), {0.0});
    const float strength = strengthOf(constant, noiseLevels(0.0f));
    EXPECT_GT(strength, 0.0f);
    EXPECT_LE(strength, strengthForNoise(0.0f, kAlpha));
}

TEST(AutomaticStrength, ExistsForPicturesSmallerThanAKernel) {
    const BlurredPicture tiny(test::circularScene(4), test::unevenKernel(3, 3), {1.0});
    const Kernel wide = analyticKernel(VELORN_BLUR_MOTION, 40.0f, 0.0f);
    EXPECT_GT(strengthOf(tiny, noiseLevels(1.0f), wide), 0.0f);
}

TEST(AutomaticStrength, CancelledCallFails) {
    const BlurredPicture picture(test::leavesScene(kSide), disc(), {1.0});
    const HostProgress host{[](double, void*) -> std::int32_t { return 0; }, nullptr};
    Team team(2, host);
    const Kernel* kernels[] = {&disc()};
    EXPECT_THROW(automaticStrength(picture.reader(), {}, kernels, noiseLevels(1.0f), kAlpha, team),
                 Failure);
}

} // namespace
} // namespace restoration
