#include "hosts/command/restoration/FramedRestoration.h"

#include "hosts/command/pictures/PixelScale.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using vel::test::blurred;
using vel::test::decibels;
using vel::test::drawnPicture;
using velorn::BlurKernel;
using velorn::makeKernel;
using velorn::RestorationSettings;
using velorn::restore;
using velorn::restoreInFrame;
using velorn::RgbPixels;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;
using Shape = velorn::AnalyticBlur::Shape;

RestorationSettings settings() {
    RestorationSettings settings;
    settings.lambda = 30000.0f;
    settings.limit = 0.0f;
    return settings;
}

bool proceed(int, int) {
    return true;
}

/// `picture` without `margin` pixels on every side.
RgbPixels framed(const RgbPixels& picture, int margin) {
    const auto& samples = std::get<Bytes>(picture.samples);
    RgbPixels part{picture.width - 2 * margin, picture.height - 2 * margin, {}};
    auto& copy = std::get<Bytes>(part.samples);
    for (int y = margin; y < picture.height - margin; ++y) {
        const auto row = samples.begin() + 3 * (y * picture.width + margin);
        copy.insert(copy.end(), row, row + 3 * part.width);
    }
    return part;
}

double quality(const RgbPixels& truth, const RgbPixels& picture) {
    return decibels(std::get<Bytes>(truth.samples), std::get<Bytes>(picture.samples), 255.0);
}

TEST(FramedRestoration, LightFromBeyondTheFrameCausesFewerStreaks) {
    const BlurKernel motion = makeKernel({Shape::Motion, 11.0f, 30.0f});
    const RgbPixels whole = drawnPicture(200, 160);
    const RgbPixels soft = framed(blurred(whole, motion), 20);
    const RgbPixels truth = framed(whole, 20);
    const double plain = quality(truth, restore(soft, motion, settings(), proceed));
    const double once = quality(truth, restoreInFrame(soft, motion, settings(), 1, proceed));
    const double twice = quality(truth, restoreInFrame(soft, motion, settings(), 2, proceed));
    EXPECT_GT(once, plain + 0.5);
    EXPECT_GT(twice, plain + 0.5);
}

TEST(FramedRestoration, StripsOfALargePictureImproveItToo) {
    // Each side is longer than three depths of the rim, so that the passes restore only strips.
    const BlurKernel motion = makeKernel({Shape::Motion, 9.0f, 20.0f});
    const RgbPixels whole = drawnPicture(480, 460);
    const RgbPixels soft = framed(blurred(whole, motion), 20);
    const RgbPixels truth = framed(whole, 20);
    const double plain = quality(truth, restore(soft, motion, settings(), proceed));
    EXPECT_GT(quality(truth, restoreInFrame(soft, motion, settings(), 1, proceed)), plain + 0.3);
}

TEST(FramedRestoration, WithoutPassesTheResultIsThePlainRestoration) {
    const BlurKernel disc = makeKernel({Shape::Disc, 2.0f, 0.0f});
    const RgbPixels soft = blurred(drawnPicture(90, 70), disc);
    EXPECT_EQ(restoreInFrame(soft, disc, settings(), 0, proceed).samples,
              restore(soft, disc, settings(), proceed).samples);
}

TEST(FramedRestoration, WithoutDeconvolutionThePictureIsNotContinued) {
    const RgbPixels soft = drawnPicture(90, 70);
    RestorationSettings none = settings();
    none.deconvolve = false;
    EXPECT_EQ(restoreInFrame(soft, velorn::pointKernel(), none, 3, proceed).samples, soft.samples);
}

TEST(FramedRestoration, KernelThatDoesNotFitTheContinuedPictureGivesThePlainRestoration) {
    const BlurKernel level = makeKernel({Shape::Motion, 121.0f, 0.0f});
    const RgbPixels soft = drawnPicture(1010, 12);
    EXPECT_EQ(restoreInFrame(soft, level, settings(), 2, proceed).samples,
              restore(soft, level, settings(), proceed).samples);
}

TEST(FramedRestoration, SmallPicturesOfBothDepthsAreRestored) {
    const BlurKernel disc = makeKernel({Shape::Disc, 2.0f, 0.0f});
    const RgbPixels one = restoreInFrame({1, 1, Bytes{7, 8, 9}}, disc, settings(), 2, proceed);
    EXPECT_EQ(std::get<Bytes>(one.samples), (Bytes{7, 8, 9}));
    const RgbPixels white{5, 3, Words(45, velorn::kFifteenBitWhite)};
    const RgbPixels result = restoreInFrame(white, disc, settings(), 2, proceed);
    ASSERT_EQ(std::get<Words>(result.samples).size(), 45u);
    for (const std::uint16_t sample : std::get<Words>(result.samples)) {
        EXPECT_NEAR(sample, velorn::kFifteenBitWhite, 4);
    }
}

TEST(FramedRestoration, ProgressRisesToItsLimitOverAllPasses) {
    const BlurKernel disc = makeKernel({Shape::Disc, 2.0f, 0.0f});
    const RgbPixels soft = drawnPicture(90, 70);
    int former = 0;
    restoreInFrame(soft, disc, settings(), 2, [&](int current, int limit) {
        EXPECT_GE(current, former);
        EXPECT_LE(current, limit);
        former = current;
        return true;
    });
    EXPECT_GT(former, 990'000);
}

TEST(FramedRestoration, EveryPassCanBeCancelled) {
    const BlurKernel disc = makeKernel({Shape::Disc, 2.0f, 0.0f});
    const RgbPixels soft = drawnPicture(90, 70);
    for (const int bound : {0, 300'000, 600'000, 900'000}) {
        const RgbPixels result = restoreInFrame(
            soft, disc, settings(), 2, [bound](int current, int) { return current < bound; });
        EXPECT_EQ(result.width, 0) << bound;
    }
}

} // namespace
