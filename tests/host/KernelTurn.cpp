#include "KernelTurn.h"

#include "Options.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::RgbPixels;
using velorn::tryWaysRound;
using velorn::Turn;
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
    velorn::RestorationSettings settings = velorn::standardSettings();
    settings.lambda = 5000.0f;
    return settings;
}

TEST(KernelTurn, LastWeightComesFirst) {
    const BlurKernel kernel{3, 1, {0.5f, 0.3f, 0.2f}};
    EXPECT_EQ(turnedRound(kernel).weights, (std::vector<float>{0.2f, 0.3f, 0.5f}));
}

TEST(KernelTurn, AutoFindsTheWayThePictureWasBlurred) {
    const RgbPixels soft = vel::test::blurred(vel::test::drawnPicture(180, 140), kHook);
    const auto fromRight = tryWaysRound(soft, kHook, Turn::Auto, settings(), goOn);
    const auto fromTurned = tryWaysRound(soft, turnedRound(kHook), Turn::Auto, settings(), goOn);
    ASSERT_TRUE(fromRight && fromTurned);
    EXPECT_EQ(fromRight->kernel.weights, kHook.weights);
    EXPECT_EQ(fromTurned->kernel.weights, kHook.weights);
}

TEST(KernelTurn, YesAndNoDecideWithoutAComparison) {
    const RgbPixels soft = vel::test::blurred(vel::test::drawnPicture(90, 70), kHook);
    const auto yes = tryWaysRound(soft, kHook, Turn::Yes, settings(), goOn);
    const auto no = tryWaysRound(soft, turnedRound(kHook), Turn::No, settings(), goOn);
    ASSERT_TRUE(yes && no);
    EXPECT_EQ(yes->kernel.weights, turnedRound(kHook).weights);
    EXPECT_EQ(no->kernel.weights, turnedRound(kHook).weights);
    EXPECT_EQ(yes->unsharpness, no->unsharpness);
}

TEST(KernelTurn, ProgressCoversBothWaysAndCancels) {
    const RgbPixels soft = vel::test::drawnPicture(90, 70);
    int last = 0;
    ASSERT_TRUE(tryWaysRound(soft, kHook, Turn::Auto, settings(), [&](int current, int limit) {
        EXPECT_LE(current, limit);
        EXPECT_GE(current, last);
        last = current;
        return true;
    }));
    EXPECT_GT(last, 500);
    EXPECT_FALSE(tryWaysRound(soft, kHook, Turn::Auto, settings(), [](int, int) { return false; }));
}

} // namespace
