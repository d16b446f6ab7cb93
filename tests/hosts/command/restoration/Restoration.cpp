#include "hosts/command/restoration/Restoration.h"

#include "hosts/command/pictures/PixelScale.h"
#include "hosts/command/terminal/Failure.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using vel::test::blurred;
using vel::test::decibels;
using vel::test::drawnPicture;
using velorn::RestorationSettings;
using velorn::restore;
using velorn::RgbPixels;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

const velorn::BlurKernel kDisc =
    velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});

RestorationSettings settings() {
    RestorationSettings settings;
    settings.lambda = 20000.0f;
    settings.limit = 0.0f;
    return settings;
}

bool proceed(int, int) {
    return true;
}

TEST(Restoration, RestorationIsMuchBetterThanTheBlurredPicture) {
    const RgbPixels sharp = drawnPicture(200, 150);
    const RgbPixels soft = blurred(sharp, kDisc);
    const RgbPixels result = restore(soft, kDisc, settings(), proceed);
    const auto& truth = std::get<Bytes>(sharp.samples);
    const double before = decibels(truth, std::get<Bytes>(soft.samples), 255.0);
    const double after = decibels(truth, std::get<Bytes>(result.samples), 255.0);
    EXPECT_GT(after, before + 4.0) << before << " dB before, " << after << " dB after";
}

TEST(Restoration, SixteenBitPicturesGiveTheSameResultOnTheirScale) {
    const RgbPixels soft = blurred(drawnPicture(200, 150), kDisc);
    RgbPixels wide{200, 150, {}};
    auto& words = wide.samples.emplace<Words>();
    for (const std::uint8_t sample : std::get<Bytes>(soft.samples)) {
        words.push_back(static_cast<std::uint16_t>(sample * 128));
    }
    const auto narrowResult = std::get<Bytes>(restore(soft, kDisc, settings(), proceed).samples);
    const auto wideResult = std::get<Words>(restore(wide, kDisc, settings(), proceed).samples);
    for (std::size_t i = 0; i < narrowResult.size(); ++i) {
        ASSERT_NEAR(wideResult[i] / 128.0, narrowResult[i], 2.0);
    }
}

TEST(Restoration, WithoutAnyStageThePictureIsUnchanged) {
    const RgbPixels soft = drawnPicture(130, 70);
    RestorationSettings none = settings();
    none.deconvolve = false;
    EXPECT_EQ(restore(soft, velorn::pointKernel(), none, proceed).samples, soft.samples);
}

TEST(Restoration, ProgressRisesToItsLimit) {
    const RgbPixels soft = drawnPicture(1100, 60);
    int former = 0;
    int last = 0;
    bool reachedLimit = false;
    restore(soft, kDisc, settings(), [&](int current, int limit) {
        EXPECT_GE(current, former);
        EXPECT_LE(current, limit);
        former = last = current;
        reachedLimit = current == limit;
        return true;
    });
    EXPECT_TRUE(reachedLimit) << last;
}

TEST(Restoration, CancellationGivesAnEmptyResult) {
    const RgbPixels soft = drawnPicture(600, 60);
    const RgbPixels result = restore(soft, kDisc, settings(), [](int, int) { return false; });
    EXPECT_EQ(result.width, 0);
    EXPECT_TRUE(std::get<Bytes>(result.samples).empty());
}

TEST(Restoration, RefusalOfTheLibraryIsAFailureWithItsReason) {
    const velorn::BlurKernel huge{151, 151, std::vector<float>(151 * 151, 1.0f / (151 * 151))};
    try {
        restore(drawnPicture(100, 100), huge, settings(), proceed);
        FAIL() << "no failure";
    } catch (const velorn::Failure& failure) {
        EXPECT_STREQ(failure.what(),
                     "out of memory, no pixels, or a kernel too large for the tiles (status -898)");
    }
}

} // namespace
