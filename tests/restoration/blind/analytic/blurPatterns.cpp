#include "restoration/blind/analytic/blurPatterns.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(BlurPatterns, DiscsHaveTheZerosOfBesselsFunction) {
    constexpr int kSide = 1000;
    const BlurPattern pattern = discPattern(10.0, 400, kSide);
    // Zeros of J1 over 2 pi, for a radius of 10 pixels, in steps of 1 / 1000.
    for (const double zero : {60.98, 111.66, 161.91, 212.05, 262.15}) {
        const auto step = static_cast<std::size_t>(std::lround(zero));
        EXPECT_LT(pattern.powers[step], 1e-3 * pattern.envelope[step]) << zero;
        EXPECT_GT(pattern.powers[step + 25], 0.2 * pattern.envelope[step + 25]) << zero;
    }
    EXPECT_NEAR(pattern.period, 50.0, 1e-9);
}

TEST(BlurPatterns, TheDiscIsTheIntegralOverItsArea) {
    const BlurPattern pattern = discPattern(3.0, 100, 200);
    for (const std::size_t step : {3u, 17u, 40u, 85u}) {
        double sum = 0.0;
        double area = 0.0;
        for (int i = -3000; i <= 3000; ++i) {
            const double x = i / 1000.0;
            const double chord = std::sqrt(9.0 - x * x);
            sum += chord * std::cos(2.0 * std::acos(-1.0) * x * static_cast<double>(step) / 200.0);
            area += chord;
        }
        EXPECT_NEAR(pattern.powers[step], sum * sum / (area * area), 1e-5) << step;
    }
}

TEST(BlurPatterns, StrokesHaveZerosOneOverTheirLengthApart) {
    const BlurPattern pattern = strokePattern(20.0, 450, 1000);
    for (const std::size_t step : {50u, 100u, 350u}) {
        EXPECT_LT(pattern.powers[step], 1e-20);
        EXPECT_GT(pattern.powers[step + 25], 0.4 * pattern.envelope[step + 25]);
    }
}

} // namespace
} // namespace restoration
