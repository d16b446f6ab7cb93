#include "velimproclib/tiles/stripBlends.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

template <class T>
class StripBlends : public testing::Test {};

using ElementTypes = testing::Types<std::uint8_t, std::uint16_t, std::int16_t>;
TYPED_TEST_SUITE(StripBlends, ElementTypes);

TYPED_TEST(StripBlends, EqualPixelsStayEqualUnderEveryWeight) {
    constexpr int kLowest = std::numeric_limits<TypeParam>::min();
    constexpr int kHighest = std::numeric_limits<TypeParam>::max();
    for (int n = 1; n < 600; n += 7) {
        const float weight = 1.0F / static_cast<float>(n + 1) * static_cast<float>(n / 2 + 1);
        for (int value = kLowest; value <= kHighest; value += kHighest > 255 ? 251 : 1) {
            const auto pixel = static_cast<TypeParam>(value);
            TypeParam merged = pixel;
            vel::fadeInRow(&pixel, &merged, weight, 1);
            ASSERT_EQ(merged, pixel) << weight;
            auto column = static_cast<float>(value);
            vel::fadeInColumns(&column, &pixel, 1, &weight, 1);
            ASSERT_EQ(column, static_cast<float>(value)) << weight;
        }
    }
}

TEST(FadeInRow, SumIsRoundedToSingleAndTruncated) {
    const std::vector<std::uint8_t> strip{10, 200, 255, 1};
    std::vector<std::uint8_t> target{11, 100, 0, 0};
    vel::fadeInRow(strip.data(), target.data(), 0.5F, 4);
    EXPECT_EQ(target, (std::vector<std::uint8_t>{10, 150, 127, 0}));
}

TEST(FadeInColumns, ReadsOneChannelAndKeepsFractions) {
    const std::vector<std::uint8_t> strip{10, 0, 0, 20, 0, 0, 30, 0, 0};
    std::vector<float> values{20.5F, -40.0F, 0x1p100F, 7.0F};
    const std::vector<float> ramp{0.25F, 0.5F, 0.75F};
    vel::fadeInColumns(values.data(), strip.data(), 3, ramp.data(), 3);
    EXPECT_EQ(values, (std::vector<float>{12.625F, -10.0F, 0x1.8p99F, 7.0F}));
}

TEST(MergeStrip, RowsAreFadedInOverFinishedOnesCopiedBelowAndNothingElseIsTouched) {
    // The second row of tiles, pulled back: rows 4 to 9 of 10, of which 4 to 6 are finished.
    vel::TileWalk walk(2, 10, {2, 6, 0}, {2, 6, 5});
    walk.m_curY = 4;
    walk.m_doneY = 7;
    cv::Mat strip(6, 2, CV_8UC3, cv::Scalar(100, 40, 0));
    cv::Mat target(10, 2, CV_8UC3, cv::Scalar(0, 40, 200));
    std::vector<float> ramp(4);
    vel::mergeStrip<std::uint8_t>(strip, target, walk, ramp);
    const std::vector<int> reds{0, 0, 0, 0, 25, 50, 75, 100, 100, 100};
    for (int y = 0; y < 10; ++y) {
        const auto pixel = target.at<cv::Vec3b>(y, 1);
        EXPECT_EQ(pixel[0], reds[static_cast<std::size_t>(y)]) << y;
        EXPECT_EQ(pixel[1], 40) << y;
        EXPECT_EQ(pixel[2], 200 - 2 * pixel[0]) << y;
    }
}

} // namespace
