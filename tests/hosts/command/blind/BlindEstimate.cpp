#include "hosts/command/blind/BlindEstimate.h"

#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>
#include <numeric>

namespace {

using vel::test::blurred;
using vel::test::drawnPicture;
using velorn::BlurKernel;
using velorn::estimateKernel;
using velorn::KernelSize;
using velorn::RgbPixels;

bool proceed(int, int) {
    return true;
}

TEST(BlindEstimate, KernelHasTheRequestedSizeAndSumsToOne) {
    const auto disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 2.0f, 0.0f});
    const auto kernel =
        estimateKernel(blurred(drawnPicture(200, 150), disc), KernelSize{9, 7}, 0.0f, proceed);
    ASSERT_TRUE(kernel.has_value());
    EXPECT_EQ(kernel->width, 9);
    EXPECT_EQ(kernel->height, 7);
    const double sum = std::accumulate(kernel->weights.begin(), kernel->weights.end(), 0.0);
    EXPECT_NEAR(sum, 1.0, 1e-5);
}

TEST(BlindEstimate, SixteenBitPicturesHaveTheirOwnScale) {
    const auto disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 2.0f, 0.0f});
    const RgbPixels narrow = blurred(drawnPicture(200, 150), disc);
    RgbPixels wide{200, 150, {}};
    auto& words = wide.samples.emplace<std::vector<std::uint16_t>>();
    for (const auto sample : std::get<std::vector<std::uint8_t>>(narrow.samples)) {
        words.push_back(static_cast<std::uint16_t>((sample * 32768 + 127) / 255));
    }
    const auto kernel = estimateKernel(wide, KernelSize{7, 7}, 0.0f, proceed);
    ASSERT_TRUE(kernel.has_value());
    EXPECT_GT(kernel->at(3, 3), kernel->at(0, 0));
    EXPECT_GT(kernel->at(3, 3), kernel->at(6, 6));
}

TEST(BlindEstimate, PictureWithoutEdgesGivesNoKernel) {
    const RgbPixels grey{100, 80, std::vector<std::uint8_t>(100 * 80 * 3, 128)};
    EXPECT_FALSE(estimateKernel(grey, KernelSize{9, 9}, 0.0f, proceed).has_value());
}

TEST(BlindEstimate, PictureSmallerThanTheMarginsOfTheKernelGivesNoKernel) {
    EXPECT_FALSE(estimateKernel(drawnPicture(12, 12), KernelSize{9, 9}, 0.0f, proceed).has_value());
}

TEST(BlindEstimate, ProgressIsReportedAndItsResultIgnored) {
    int calls = 0;
    const auto kernel =
        estimateKernel(drawnPicture(160, 120), KernelSize{5, 5}, 0.0f, [&](int current, int limit) {
            EXPECT_LE(current, limit);
            ++calls;
            return false;
        });
    EXPECT_TRUE(kernel.has_value());
    EXPECT_GT(calls, 0);
}

} // namespace
