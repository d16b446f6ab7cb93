#include "hosts/command/blind/BlindKernel.h"

#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/terminal/Failure.h"
#include "SampleBlurs.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using velorn::BlindSettings;
using velorn::Failure;
using velorn::findKernel;
using velorn::RgbPixels;
using velorn::Turn;

class BlindKernel : public testing::Test {
protected:
    velorn::BlindKernel find(const RgbPixels& pixels, int side, Turn turn = Turn::Auto) {
        BlindSettings settings;
        settings.size = {side, side};
        settings.turn = turn;
        return findKernel(pixels, settings, m_interrupt, m_bar);
    }

    std::string failureOf(const RgbPixels& pixels, int side) {
        try {
            find(pixels, side);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "none";
    }

    std::ostringstream m_terminal;
    velorn::Interrupt m_interrupt;
    velorn::ProgressBar m_bar{m_terminal, true};
};

TEST_F(BlindKernel, DiscBlurIsFoundAndHelps) {
    const auto disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 2.0f, 0.0f});
    const auto found = find(vel::test::blurred(vel::test::drawnPicture(240, 200), disc), 7);
    EXPECT_TRUE(found.isHelpful);
    EXPECT_EQ(found.kernel.width, 7);
    EXPECT_NE(m_terminal.str().find('%'), std::string::npos);
}

TEST_F(BlindKernel, KernelThatMakesThePictureWorseIsToldFromOneThatHelps) {
    // Where there is hardly any contrast, only a shadow of the kernel is found.
    const RgbPixels sharp = vel::test::faded(vel::test::drawnPicture(240, 200), 0.3);
    const RgbPixels soft = vel::test::blurred(sharp, velorn::tools::curvedShake());
    const auto found = find(soft, 15);
    EXPECT_FALSE(found.isHelpful);
    velorn::RestorationSettings settings;
    settings.lambda = velorn::blindStrength(0.0);
    const RgbPixels result =
        velorn::restore(soft, found.kernel, settings, [](int, int) { return true; });
    const auto samplesOf = [](const RgbPixels& pixels) {
        return std::get<std::vector<std::uint8_t>>(pixels.samples);
    };
    EXPECT_LT(vel::test::decibels(samplesOf(sharp), samplesOf(result), 255.0),
              vel::test::decibels(samplesOf(sharp), samplesOf(soft), 255.0));
}

TEST_F(BlindKernel, TurnMayBeDecidedBeforehandAndAutoIsOneOfBoth) {
    const auto motion = velorn::makeKernel({velorn::AnalyticBlur::Shape::Motion, 5.0f, 20.0f});
    const RgbPixels soft = vel::test::blurred(vel::test::drawnPicture(200, 150), motion);
    const auto asFound = find(soft, 7, Turn::No).kernel;
    const auto turned = find(soft, 7, Turn::Yes).kernel;
    EXPECT_NE(asFound.weights, turned.weights);
    EXPECT_EQ(turnedRound(asFound).weights, turned.weights);
    const auto chosen = find(soft, 7).kernel;
    EXPECT_TRUE(chosen.weights == asFound.weights || chosen.weights == turned.weights);
}

TEST_F(BlindKernel, TooFewEdgesAreToldWithTheKernelsSize) {
    const RgbPixels grey{100, 80, std::vector<std::uint8_t>(100 * 80 * 3, 128)};
    EXPECT_EQ(failureOf(grey, 9), "the picture has too few edges to find a kernel of 9 by 9 in it");
}

TEST_F(BlindKernel, KernelTooLargeForThePictureIsToldWithTheLimit) {
    const std::string failure = failureOf(vel::test::drawnPicture(60, 40), 53);
    EXPECT_NE(failure.find("51 by 51 at most"), std::string::npos) << failure;
}

TEST_F(BlindKernel, SignalThatCameBeforeIsHeeded) {
    std::raise(SIGINT);
    EXPECT_THROW(find(vel::test::drawnPicture(90, 70), 5), velorn::Interrupted);
}

TEST_F(BlindKernel, StrengthIsHeldBackForCleanPicturesAndFollowsTheNoiseOfOthers) {
    EXPECT_EQ(velorn::blindStrength(0.1), 3000.0f);
    EXPECT_EQ(velorn::blindStrength(20.0), velorn::defaultStrength(20.0));
    EXPECT_LT(velorn::blindStrength(20.0), 3000.0f);
}

} // namespace
