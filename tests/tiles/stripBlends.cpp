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
            vel::fadeInRow<float>(&pixel, vel::unaligned(&merged), weight, 1);
            ASSERT_EQ(merged, pixel) << weight;
            vel::fadeInRow<double>(&pixel, vel::unaligned(&merged), weight, 1);
            ASSERT_EQ(merged, pixel) << weight;
            auto column = static_cast<float>(value);
            vel::fadeInColumns(&column, &pixel, 1, &weight, 1);
            ASSERT_EQ(column, static_cast<float>(value)) << weight;
        }
    }
}

TEST(FadeInRow, SumIsTruncated) {
    const std::vector<std::uint8_t> strip{10, 200, 255, 1};
    std::vector<std::uint8_t> target{11, 100, 0, 0};
    vel::fadeInRow<float>(strip.data(), vel::unaligned(target.data()), 0.5F, 4);
    EXPECT_EQ(target, (std::vector<std::uint8_t>{10, 150, 127, 0}));
}

TEST(FadeInRow, SumOfSinglesIsRoundedBeforeItIsTruncatedAndADoubleIsNot) {
    // The float nearest to 1/9 is above it: 9 * (1 - weight) is just below 8, by less than a single
    // resolves. 8 * (1 - weight) + 17 * weight is just above 9, and comes out the same both ways.
    const float weight = 1.0F / 9.0F;
    const std::vector<std::uint8_t> strip{0, 0, 17};
    std::vector<std::uint8_t> rounded{9, 90, 8};
    std::vector<std::uint8_t> exact = rounded;
    vel::fadeInRow<float>(strip.data(), vel::unaligned(rounded.data()), weight, 3);
    vel::fadeInRow<double>(strip.data(), vel::unaligned(exact.data()), weight, 3);
    EXPECT_EQ(rounded, (std::vector<std::uint8_t>{8, 80, 9}));
    EXPECT_EQ(exact, (std::vector<std::uint8_t>{7, 79, 9}));
}

TEST(FadeInColumns, ReadsOneChannelAndKeepsFractions) {
    const std::vector<std::uint8_t> strip{10, 0, 0, 20, 0, 0, 30, 0, 0};
    std::vector<float> values{20.5F, -40.0F, 0x1p100F, 7.0F};
    const std::vector<float> ramp{0.25F, 0.5F, 0.75F};
    vel::fadeInColumns(values.data(), strip.data(), 3, ramp.data(), 3);
    EXPECT_EQ(values, (std::vector<float>{12.625F, -10.0F, 0x1.8p99F, 7.0F}));
}

} // namespace
