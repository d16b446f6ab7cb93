#include "restoration/light/ToneCurve.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace restoration {
namespace {

ToneCurve power(double exponent) {
    std::vector<double> light(ToneCurve::kPieces + 1);
    for (std::size_t i = 0; i < light.size(); ++i) {
        light[i] = std::pow(static_cast<double>(i) / ToneCurve::kPieces, exponent);
    }
    return ToneCurve(light);
}

void expectEveryLevelComesBack(const ToneCurve& curve, int white) {
    for (int level = 0; level <= white; ++level) {
        const float value = static_cast<float>(level) / static_cast<float>(white);
        const float back = curve.display(curve.light(value)) * static_cast<float>(white);
        ASSERT_EQ(std::lround(back), level);
        ASSERT_NEAR(back, static_cast<float>(level), 0.25f);
    }
}

TEST(ToneCurve, EveryLevelOfEightAndSixteenBitsComesBack) {
    for (const ToneCurve& curve : {ToneCurve::sRgb(), power(1.0), power(1.8), power(2.6)}) {
        expectEveryLevelComesBack(curve, 255);
        expectEveryLevelComesBack(curve, 65535);
    }
}

TEST(ToneCurve, SRgbHasTheLightOfItsStandard) {
    const ToneCurve curve = ToneCurve::sRgb();
    EXPECT_EQ(curve.light(0.0f), 0.0f);
    EXPECT_EQ(curve.light(1.0f), 1.0f);
    // Middle grey: ((0.5 + 0.055) / 1.055)^2.4; the straight part: 0.02 / 12.92.
    EXPECT_NEAR(curve.light(0.5f), 0.21404114f, 1e-6f);
    EXPECT_NEAR(curve.light(0.02f), 0.001547988f, 1e-8f);
    EXPECT_NEAR(curve.slope(0.02f), 1.0f / 12.92f, 1e-4f);
    EXPECT_NEAR(curve.slope(1.0f), 2.4f / 1.055f, 1e-3f);
}

TEST(ToneCurve, RisesEverywhereAndContinuesBeyondBlackAndWhite) {
    const ToneCurve curve = ToneCurve::sRgb();
    float last = curve.light(-0.5f);
    EXPECT_LT(last, 0.0f);
    for (int i = -4999; i <= 20000; ++i) {
        const float light = curve.light(static_cast<float>(i) / 10000.0f);
        ASSERT_GT(light, last);
        last = light;
    }
    for (const float value : {-3.0f, -0.01f, 1.001f, 1.5f, 40.0f}) {
        EXPECT_NEAR(curve.display(curve.light(value)), value, 1e-5f * std::abs(value));
    }
}

TEST(ToneCurve, AFlatCurveIsGivenASlope) {
    std::vector<double> light(ToneCurve::kPieces + 1, 0.0);
    for (std::size_t i = light.size() / 2; i < light.size(); ++i) {
        light[i] = 1.0;
    }
    const ToneCurve curve(light);
    EXPECT_EQ(curve.light(1.0f), 1.0f);
    EXPECT_NEAR(curve.slope(0.25f), 1.0f / 64.0f, 1e-3f);
    expectEveryLevelComesBack(curve, 65535);
}

TEST(ToneCurve, ValuesThatAreNotNumbersDoNoHarm) {
    const ToneCurve curve = ToneCurve::sRgb();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(std::isnan(curve.light(std::nanf(""))));
    EXPECT_TRUE(std::isnan(curve.display(std::nanf(""))));
    EXPECT_EQ(curve.light(infinity), infinity);
    EXPECT_EQ(curve.display(infinity), infinity);
    EXPECT_EQ(curve.display(-infinity), -infinity);
}

TEST(ToneCurve, RowsAreConvertedLikeSingleValues) {
    const ToneCurve curve = ToneCurve::sRgb();
    std::vector<float> row = {-0.1f, 0.0f, 0.03f, 0.4f, 1.0f, 1.2f};
    const std::vector<float> values = row;
    curve.toLight(row);
    for (std::size_t i = 0; i < row.size(); ++i) {
        EXPECT_EQ(row[i], curve.light(values[i]));
    }
    const std::vector<float> light = row;
    curve.toDisplay(row);
    for (std::size_t i = 0; i < row.size(); ++i) {
        EXPECT_EQ(row[i], curve.display(light[i]));
    }
}

} // namespace
} // namespace restoration
