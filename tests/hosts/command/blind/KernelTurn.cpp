#include "hosts/command/blind/KernelTurn.h"

#include "hosts/command/commands/Options.h"
#include "SampleBlurs.h"
#include "SamplePictures.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using velorn::betterWayRound;
using velorn::BlurKernel;
using velorn::RgbPixels;
using velorn::turnedRound;

/// A hook whose weight fades along its way.
const BlurKernel kHook{5, 5, {0.20f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.20f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.15f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.15f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.10f, 0.1f, 0.05f, 0.05f, 0.0f}};

bool goOn(int, int) {
    return true;
}

velorn::RestorationSettings settings() {
    velorn::RestorationSettings settings;
    settings.lambda = 5000.0f;
    return settings;
}

TEST(KernelTurn, LastWeightComesFirst) {
    const BlurKernel kernel{3, 1, {0.5f, 0.3f, 0.2f}};
    EXPECT_EQ(turnedRound(kernel).weights, (std::vector<float>{0.2f, 0.3f, 0.5f}));
}

TEST(KernelTurn, WayThatThePictureWasBlurredIsFoundFromEitherEnd) {
    const RgbPixels soft = vel::test::blurred(vel::test::drawnPicture(180, 140), kHook);
    const auto fromRight = betterWayRound(soft, kHook, goOn);
    const auto fromTurned = betterWayRound(soft, turnedRound(kHook), goOn);
    ASSERT_TRUE(fromRight && fromTurned);
    EXPECT_EQ(fromRight->weights, kHook.weights);
    EXPECT_EQ(fromTurned->weights, kHook.weights);
}

TEST(KernelTurn, NineOfTenChoicesAreTheWayThatRestoresBetter) {
    int cases = 0;
    int right = 0;
    for (const auto& view : velorn::tools::drawnViews(280, 220)) {
        for (const auto& blur : velorn::tools::unevenBlurs()) {
            const auto photograph = velorn::tools::photographOf(view.colours, blur.kernel, 1.0, 5);
            const auto decibelsWith = [&](const BlurKernel& kernel) {
                return photograph.decibelsOf(
                    velorn::restore(photograph.taken, kernel, settings(), goOn));
            };
            const BlurKernel turned = turnedRound(blur.kernel);
            const auto chosen = betterWayRound(photograph.taken, turned, goOn);
            ASSERT_TRUE(chosen.has_value());
            const BlurKernel other = turnedRound(*chosen);
            right += decibelsWith(*chosen) > decibelsWith(other) ? 1 : 0;
            ++cases;
        }
    }
    EXPECT_GE(cases, 10);
    EXPECT_GE(10 * right, 9 * cases) << right << " of " << cases;
}

TEST(KernelTurn, ProgressCoversBothWaysAndCancels) {
    const RgbPixels soft = vel::test::drawnPicture(90, 70);
    int last = 0;
    ASSERT_TRUE(betterWayRound(soft, kHook, [&](int current, int limit) {
        EXPECT_LE(current, limit);
        EXPECT_GE(current, last);
        last = current;
        return true;
    }));
    EXPECT_GT(last, 500);
    EXPECT_FALSE(betterWayRound(soft, kHook, [](int, int) { return false; }));
    EXPECT_FALSE(betterWayRound(soft, kHook, [](int done, int) { return done < 700; }));
}

} // namespace
