#include "restoration/strength/leastRisk.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

constexpr int kLast = 160;

TEST(LeastRisk, FindsTheLowestPointOfAnAsymmetricValleyInFewEvaluations) {
    for (int lowest = 0; lowest <= kLast; ++lowest) {
        int evaluations = 0;
        const int found = leastRisk(kLast, [&](int place) {
            ++evaluations;
            const double octaves = (place - lowest) / 16.0;
            return std::exp(-0.4 * octaves) + 0.4 * octaves; // steeper on the strong side
        });
        EXPECT_NEAR(found, lowest, 8) << lowest;
        EXPECT_LE(evaluations, 3 + lowest / 32 + 1) << lowest;
    }
}

TEST(LeastRisk, PrefersTheStrongestOfEqualRisks) {
    EXPECT_EQ(leastRisk(kLast, [](int) { return 3.0; }), 0);
}

TEST(LeastRisk, OfARiskThatFallsEverywhereIsTheLastPlace) {
    EXPECT_EQ(leastRisk(kLast, [](int place) { return 1.0 - place; }), kLast);
}

TEST(LeastRisk, EndsForRisksThatAreNoNumbers) {
    const int found =
        leastRisk(kLast, [](int) { return std::numeric_limits<double>::quiet_NaN(); });
    EXPECT_GE(found, 0);
    EXPECT_LE(found, kLast);
}

TEST(StrengthAt, HalvesEverySixteenPlaces) {
    EXPECT_EQ(strengthAt(800.0f, 0), 800.0f);
    EXPECT_EQ(strengthAt(800.0f, 48), 100.0f);
    for (int place = 0; place < 64; ++place) {
        EXPECT_NEAR(strengthAt(1.0f, place), std::exp2(-place / 16.0), 1e-6);
    }
}

} // namespace
} // namespace restoration
