#include "hosts/command/blind/BlindKernel.h"

#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/restoration/Restoration.h"
#include "hosts/command/terminal/Failure.h"
#include "SampleBlurs.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using velorn::BlindSettings;
using velorn::Failure;
using velorn::findKernel;
using velorn::RgbPixels;
using velorn::Turn;

bool proceed(int, int) {
    return true;
}

BlindSettings settingsFor(int side, Turn turn = Turn::Auto) {
    BlindSettings settings;
    settings.size = {side, side};
    settings.turn = turn;
    return settings;
}

velorn::BlindKernel find(const RgbPixels& pixels, int side, Turn turn = Turn::Auto) {
    return findKernel(pixels, settingsFor(side, turn), proceed).value();
}

std::string failureOf(const RgbPixels& pixels, int side) {
    try {
        find(pixels, side);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(BlindKernel, KernelOfADiscBlurIsFoundAndHelps) {
    const auto disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 2.0f, 0.0f});
    const auto found = find(vel::test::blurred(vel::test::drawnPicture(240, 200), disc), 7);
    EXPECT_TRUE(found.isHelpful);
    EXPECT_EQ(found.kernel.width, 7);
}

TEST(BlindKernel, KernelThatMakesThePictureWorseIsNotHelpful) {
    // With so little contrast, only a faint copy of the kernel is found.
    const RgbPixels sharp = vel::test::faded(vel::test::drawnPicture(240, 200), 0.3);
    const RgbPixels soft = vel::test::blurred(sharp, velorn::tools::curvedShake());
    const auto found = find(soft, 15);
    EXPECT_FALSE(found.isHelpful);
    velorn::RestorationSettings settings;
    settings.lambda = velorn::blindStrength(0.0);
    const RgbPixels result = velorn::restore(soft, found.kernel, settings, proceed);
    const auto samplesOf = [](const RgbPixels& pixels) {
        return std::get<std::vector<std::uint8_t>>(pixels.samples);
    };
    EXPECT_LT(vel::test::decibels(samplesOf(sharp), samplesOf(result), 255.0),
              vel::test::decibels(samplesOf(sharp), samplesOf(soft), 255.0));
}

TEST(BlindKernel, TurnRotatesTheKernelAndAutoChoosesOneOfBoth) {
    const auto motion = velorn::makeKernel({velorn::AnalyticBlur::Shape::Motion, 5.0f, 20.0f});
    const RgbPixels soft = vel::test::blurred(vel::test::drawnPicture(200, 150), motion);
    const auto asFound = find(soft, 7, Turn::No).kernel;
    const auto turned = find(soft, 7, Turn::Yes).kernel;
    EXPECT_NE(asFound.weights, turned.weights);
    EXPECT_EQ(rotatedBy180(asFound).weights, turned.weights);
    const auto chosen = find(soft, 7).kernel;
    EXPECT_TRUE(chosen.weights == asFound.weights || chosen.weights == turned.weights);
}

TEST(BlindKernel, PictureWithTooFewEdgesIsAFailureThatNamesTheSize) {
    const RgbPixels grey{100, 80, std::vector<std::uint8_t>(100 * 80 * 3, 128)};
    EXPECT_EQ(failureOf(grey, 9), "the picture has too few edges to find a kernel of 9 by 9");
}

TEST(BlindKernel, KernelTooLargeForThePictureIsAFailureThatNamesTheLimit) {
    EXPECT_EQ(failureOf(vel::test::drawnPicture(60, 40), 53),
              "a kernel of 53 by 53 is too large for this picture; the limit is 51 by 51");
}

TEST(BlindKernel, ProgressRisesToItsLimit) {
    int former = 0;
    double share = 0.0;
    ASSERT_TRUE(
        findKernel(vel::test::drawnPicture(90, 70), settingsFor(5), [&](int current, int limit) {
            EXPECT_GE(current, former);
            former = current;
            share = static_cast<double>(current) / limit;
            return true;
        }).has_value());
    EXPECT_GT(share, 0.99);
}

TEST(BlindKernel, EachStepCanBeCancelled) {
    const RgbPixels picture = vel::test::drawnPicture(90, 70);
    for (const double bound : {0.0, 0.6, 0.8, 0.95}) {
        const auto found = findKernel(picture, settingsFor(5), [bound](int current, int limit) {
            return current < bound * limit;
        });
        EXPECT_FALSE(found.has_value()) << bound;
    }
}

TEST(BlindKernel, StrengthIsLimitedForCleanPicturesAndFollowsTheNoiseOfOthers) {
    EXPECT_EQ(velorn::blindStrength(0.1), 3000.0f);
    EXPECT_EQ(velorn::blindStrength(20.0), velorn::defaultStrength(20.0));
    EXPECT_LT(velorn::blindStrength(20.0), 3000.0f);
}

} // namespace
