#include "velimproclib/veldeblurcv/detail/DetailCurve.h"

#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace vel {
namespace {

using Plane = test::GuardedPlane<float>;

constexpr float kKnee = 0.18f;
constexpr float kBoost = 3.0f;
constexpr float kLastRead = 0.4677f; // the last level that the lookup reads

Plane noise(int width, int height, float low = -0.6f, float high = 0.6f) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> pixel(low, high);
    Plane plane(width, height, 12, 4);
    plane.fill([&] { return pixel(random); });
    return plane;
}

/// Applies `curve` with the settings of the detail stage and checks the canaries of `plane`.
void apply(CDetailCurve& curve, Plane& plane, float gamma, float gain) {
    GIMG<float> image(plane.width(), plane.height(), plane.data(), plane.step());
    curve.apply(image, gamma, gain, kKnee, -0.5f, 0.5f, kBoost);
    EXPECT_TRUE(plane.intact());
}

/// The result for one pixel.
float applied(float value, float gamma, float gain) {
    CDetailCurve curve;
    Plane plane(1, 1);
    plane.set(0, 0, value);
    apply(curve, plane, gamma, gain);
    return plane.at(0, 0);
}

/// The curve in double precision.
double plainCurve(double detail, double gamma, double gain) {
    const double slope = gain > 0 ? 1 + 3 * gain : 1 + gain;
    const double centre = slope * 0.18;
    double bent = detail;
    if (gamma > 0.01 || gamma < -0.01) {
        const double power = gamma > 0 ? 1 / (1 + 2 * gamma) : 1 - gamma;
        bent = std::copysign(centre * std::pow(std::abs(detail) / centre, power), detail);
    }
    return bent * slope;
}

TEST(DetailCurve, HasThirtyTwoKnots) {
    const CDetailCurve curve;
    EXPECT_EQ(curve.m_count, 32);
    EXPECT_TRUE(curve.m_values && curve.m_levels);
}

TEST(DetailCurve, LevelsAccumulateInSinglePrecision) {
    CDetailCurve curve;
    Plane plane = noise(3, 3);
    apply(curve, plane, 0.5f, 0.5f);
    float level = -0.5f;
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(curve.m_levels[i], level);
        level += 1.0f / 31.0f;
    }
    EXPECT_NEAR(curve.m_levels[31], 0.5f, 1e-5f);
    EXPECT_NEAR(curve.m_levels[30], kLastRead, 1e-4f);
}

TEST(DetailCurve, KnotsFollowTheGainAndThePower) {
    for (const float gamma : {-2.0f, -0.5f, -0.02f, 0.0f, 0.005f, 0.02f, 0.5f, 1.0f, 5.0f}) {
        for (const float gain : {-0.98f, -0.5f, 0.0f, 0.02f, 0.5f, 1.0f, 4.0f}) {
            CDetailCurve curve;
            Plane plane = noise(1, 1);
            apply(curve, plane, gamma, gain);
            if (gamma == 0.0f && gain == 0.0f) {
                continue;
            }
            for (std::size_t i = 0; i < 32; ++i) {
                const double expected = plainCurve(curve.m_levels[i], gamma, gain);
                EXPECT_NEAR(curve.m_values[i], expected, 2e-6 * (1.0 + std::abs(expected)))
                    << gamma << ' ' << gain << ' ' << i;
            }
        }
    }
}

TEST(DetailCurve, WithoutAPowerTheKnotsAreTheLevelsTimesTheGainExactly) {
    CDetailCurve curve;
    Plane plane = noise(1, 1);
    apply(curve, plane, 0.0f, 0.02f);
    const float slope = 1.0f + kBoost * 0.02f;
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(curve.m_values[i], curve.m_levels[i] * slope);
    }
}

TEST(DetailCurve, GammaOfOneHundredthIsAStraightLine) {
    // The floats 0.01 and -0.01 are nearer to zero than the doubles; their neighbours are not.
    for (const float gamma : {0.01f, -0.01f}) {
        CDetailCurve curve;
        Plane plane = noise(1, 1);
        apply(curve, plane, gamma, 0.5f);
        for (std::size_t i = 0; i < 32; ++i) {
            EXPECT_EQ(curve.m_values[i], curve.m_levels[i] * 2.5f);
        }
        apply(curve, plane, std::nextafter(gamma, 2.0f * gamma), 0.5f);
        EXPECT_NE(curve.m_values[0], curve.m_levels[0] * 2.5f);
    }
}

TEST(DetailCurve, GainOfTwoHundredthsStrengthensDetailBySixPercent) {
    for (const float detail : {-0.45f, -0.2f, -0.001f, 0.001f, 0.1f, 0.46f}) {
        EXPECT_NEAR(applied(detail, 0.0f, 0.02f), 1.06f * detail, 2e-7f);
    }
}

TEST(DetailCurve, NegativeGainsAreNotBoosted) {
    EXPECT_NEAR(applied(0.2f, 0.0f, 0.5f), 2.5f * 0.2f, 1e-6f);
    EXPECT_NEAR(applied(0.2f, 0.0f, -0.5f), 0.5f * 0.2f, 1e-6f);
}

TEST(DetailCurve, GammaAboveZeroRaisesSmallAmplitudesAndReducesLargeOnes) {
    EXPECT_GT(applied(0.05f, 0.5f, 0.0f), 0.06f);
    EXPECT_LT(applied(0.4f, 0.5f, 0.0f), 0.35f);
    EXPECT_LT(applied(-0.05f, 0.5f, 0.0f), -0.06f);
    EXPECT_LT(applied(0.05f, -0.5f, 0.0f), 0.04f);
    EXPECT_GT(applied(0.4f, -0.5f, 0.0f), 0.45f);
    EXPECT_NEAR(applied(0.18f, 0.5f, 0.0f), 0.18f, 1e-3f);
}

TEST(DetailCurve, GainNearMinusOneClearsThePlane) {
    for (const float gain : {-0.995f, -0.99f, -1.0f, -5.0f}) {
        EXPECT_EQ(applied(0.3f, 0.5f, gain), 0.0f);
        EXPECT_EQ(applied(std::nanf(""), 0.0f, gain), 0.0f);
    }
    EXPECT_NE(applied(0.3f, 0.0f, -0.98f), 0.0f);
    // The float -0.99 is below the double, its upper neighbour above.
    EXPECT_NE(applied(0.3f, 0.0f, std::nextafter(-0.99f, 0.0f)), 0.0f);
}

TEST(DetailCurve, SettingsNearerToZeroThanOneThousandthDoNotChangeThePlane) {
    for (const float near : {0.0f, 0.0009f, -0.0009f}) {
        for (const float detail : {0.7f, -3.0f, 0.25f}) {
            EXPECT_EQ(applied(detail, near, near), detail);
        }
    }
    EXPECT_NE(applied(0.25f, 0.0f, 0.002f), 0.25f);
    EXPECT_EQ(applied(0.7f, 0.002f, 0.0f), 0.5f);
    // The float 0.001 is above the double.
    EXPECT_EQ(applied(0.7f, 0.0f, 0.001f), 0.5f);
    EXPECT_EQ(applied(0.7f, 0.001f, 0.0f), 0.5f);
    EXPECT_EQ(applied(0.7f, -0.001f, -0.001f), 0.5f);
    EXPECT_EQ(applied(0.7f, 0.0f, std::nextafter(0.001f, 0.0f)), 0.7f);
}

TEST(DetailCurve, DetailFromTheLastLevelThatIsReadGetsNoGain) {
    CDetailCurve curve;
    Plane plane = noise(1, 1);
    apply(curve, plane, 0.0f, 1.0f);
    const float last = curve.m_levels[30];
    EXPECT_EQ(applied(last, 0.0f, 1.0f), last);
    EXPECT_EQ(applied(0.49f, 0.0f, 1.0f), 0.49f);
    EXPECT_NEAR(applied(std::nextafter(last, 0.0f), 0.0f, 1.0f), 4.0f * last, 1e-5f);
    EXPECT_NEAR(applied(-0.5f, 0.0f, 1.0f), -2.0f, 1e-6f);
}

TEST(DetailCurve, SpikesAreCutBeforeTheLookup) {
    EXPECT_EQ(applied(0.7f, 0.0f, 1.0f), 0.5f);
    EXPECT_EQ(applied(std::numeric_limits<float>::infinity(), 0.3f, 1.0f), 0.5f);
    EXPECT_NEAR(applied(-0.7f, 0.0f, 1.0f), -2.0f, 1e-6f);
}

TEST(DetailCurve, ThePlaneFollowsTheCurveWithEqualBitsOnEveryVariant) {
    const Plane before = noise(67, 33);
    CDetailCurve curve;
    Plane expected = before;
    apply(curve, expected, 0.4f, 0.3f);
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            const float detail = std::clamp(before.at(x, y), -0.5f, 0.5f);
            // Between the knots next to zero the cubic cannot follow the power.
            if (std::abs(detail) > 0.1f && detail < 0.467f) {
                ASSERT_NEAR(expected.at(x, y), plainCurve(detail, 0.4, 0.3), 3e-3) << detail;
            }
        }
    }
    test::forEachTarget([&] {
        CDetailCurve own;
        Plane plane = before;
        apply(own, plane, 0.4f, 0.3f);
        EXPECT_TRUE(plane.sameBits(expected));
        for (std::size_t i = 0; i < 32; ++i) {
            EXPECT_EQ(own.m_values[i], curve.m_values[i]);
        }
    });
}

TEST(DetailCurve, TableIsRebuiltForEveryCall) {
    CDetailCurve curve;
    Plane first = noise(20, 20);
    apply(curve, first, 1.0f, 1.0f);
    Plane second = noise(20, 20);
    apply(curve, second, 0.0f, 0.5f);
    CDetailCurve fresh;
    Plane expected = noise(20, 20);
    apply(fresh, expected, 0.0f, 0.5f);
    EXPECT_TRUE(second.sameBits(expected));
}

TEST(DetailCurve, SettingsThatAreNotFiniteGiveADefinedCurve) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::nanf("");
    const float straight = applied(0.2f, 0.0f, 0.5f);
    EXPECT_EQ(applied(0.2f, nan, 0.5f), straight) << "a gamma of NaN is no power";
    EXPECT_TRUE(std::isnan(applied(0.2f, 0.5f, nan)));
    EXPECT_EQ(applied(0.2f, 0.5f, -infinity), 0.0f);
    EXPECT_EQ(applied(0.2f, 0.5f, -1e30f), 0.0f);
    // Power 0: every amplitude becomes the knee, 2.5 * 0.18, before the gain.
    EXPECT_NEAR(applied(0.2f, infinity, 0.5f), 2.5f * 2.5f * 0.18f, 1e-5f);
}

TEST(DetailCurve, AnySettingsWriteNothingOutsideOfThePlane) {
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float odd : {std::nanf(""), infinity, -infinity, 1e30f, -1e30f}) {
        for (const float gamma : {odd, 0.5f}) {
            CDetailCurve curve;
            Plane plane = noise(37, 5);
            apply(curve, plane, gamma, gamma == 0.5f ? odd : 0.5f);
        }
    }
}

TEST(DetailCurve, NaNStaysAndInfinitiesAreCut) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(std::isnan(applied(std::nanf(""), 0.5f, 0.5f)));
    EXPECT_EQ(applied(infinity, 0.5f, 0.5f), applied(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(applied(-infinity, 0.5f, 0.5f), applied(-0.5f, 0.5f, 0.5f));
}

} // namespace
} // namespace vel
