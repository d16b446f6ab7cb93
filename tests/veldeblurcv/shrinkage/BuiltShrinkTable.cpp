#include "velimproclib/veldeblurcv/shrinkage/BuiltShrinkTable.h"

#include "tests/support/Digest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace vel;

const double kRate = std::sqrt(2.0) + std::sqrt(2.0);

BuiltShrinkTable built(double alpha, int lastLevel = 0) {
    BuiltShrinkTable table;
    table.allocate(lastLevel);
    table.build(alpha, kRate, 4);
    return table;
}

TEST(BuiltShrinkTable, IsZeroBeforeItIsBuilt) {
    BuiltShrinkTable table;
    table.allocate(5);
    for (int level = 0; level <= 5; ++level) {
        for (const float v : {-30.0f, -10.0f, 0.0f, 3.0f, 10.0f, 30.0f}) {
            EXPECT_EQ(table.at(level, v), 0.0f) << level << ' ' << v;
        }
    }
}

TEST(BuiltShrinkTable, ValuesKeepTheirBits) {
    const BuiltShrinkTable table = built(0.66, 5);
    test::Digest digest;
    for (int level = 0; level <= 5; ++level) {
        std::vector<float> values;
        for (float v = -12.0f; v < 12.0f; v += 0.013f) {
            values.push_back(table.at(level, v));
        }
        for (float v = 9.9995f; v < 10.0005f; v += 0.00001f) { // the last cells of the grid
            values.push_back(table.at(level, v));
            values.push_back(table.at(level, -v));
        }
        digest.add(values);
    }
    EXPECT_EQ(digest.text(), "CE3C1F2CD262D274");
}

TEST(BuiltShrinkTable, HardThresholdAtAlphaZero) {
    const BuiltShrinkTable table = built(0.0);
    EXPECT_EQ(table.at(0, 1.4f), 0.0f);
    EXPECT_NEAR(table.at(0, 1.4143f), 1.4143f, 1e-6);
    EXPECT_NEAR(table.at(0, -7.3f), -7.3f, 2e-6);
}

TEST(BuiltShrinkTable, SoftThresholdAtAlphaOne) {
    const BuiltShrinkTable table = built(1.0);
    EXPECT_NEAR(table.at(0, 2.0f), 1.0f, 1e-6);
    EXPECT_EQ(table.at(0, 0.5f), 0.0f);
    EXPECT_NEAR(table.at(0, -4.25f), -3.25f, 1e-6);
}

TEST(BuiltShrinkTable, JumpsToTwoThirdsOfTheThresholdAtAlphaOneHalf) {
    const BuiltShrinkTable table = built(0.5);
    EXPECT_EQ(table.at(0, 1.49f), 0.0f);
    EXPECT_NEAR(table.at(0, 1.5001f), 1.00013f, 2e-4);
}

TEST(BuiltShrinkTable, ZeroStaysZeroAtEveryLevel) {
    for (const double alpha : {0.0, 0.6, 1.0}) {
        const BuiltShrinkTable table = built(alpha, 5);
        for (int level = 0; level <= 5; ++level) {
            EXPECT_EQ(table.at(level, 0.0f), 0.0f) << alpha << " " << level;
        }
    }
}

TEST(BuiltShrinkTable, SolvesTheScalarProblemAtEveryLevel) {
    const double alpha = 0.66;
    const BuiltShrinkTable table = built(alpha, 5);
    double beta = 1;
    for (int level = 0; level <= 5; ++level, beta *= kRate) {
        const double jump = std::pow(2 * (1 - alpha) / beta, 1 / (2 - alpha));
        const double threshold = jump + alpha / beta * std::pow(jump, alpha - 1);
        for (const double share : {1.02, 1.1, 1.7, 4.0}) {
            const double v = share * threshold;
            const double w = table.at(level, static_cast<float>(v));
            EXPECT_NEAR(alpha * std::pow(w, alpha - 1) + beta * (w - v), 0.0, 1e-3 * beta * v)
                << level << " " << share;
            EXPECT_NEAR(table.at(level, static_cast<float>(-v)), -w, 1e-5);
        }
        EXPECT_EQ(table.at(level, static_cast<float>(0.98 * threshold)), 0.0f);
    }
}

TEST(BuiltShrinkTable, ValuesAboveTheGridExtrapolateTheCurve) {
    const BuiltShrinkTable table = built(0.5);
    // At 2^40 all other terms are below the rounding of the slope's term.
    const float huge = std::ldexp(1.0f, 40);
    const float slope = table.at(0, huge) / huge;
    EXPECT_NEAR(slope, 1.0f, 0.03f);
    EXPECT_NEAR(table.at(0, 10.0f), table.at(0, 9.9995f), 1e-3f);
    for (const float v : {12.0f, 20.0f, 100.0f}) {
        EXPECT_NEAR(table.at(0, v) - table.at(0, 10.0f), slope * (v - 10.0f), 1e-6f * v) << v;
    }
}

TEST(BuiltShrinkTable, ValuesBelowTheGridLieOnALineThroughTheOriginAndTheFirstPoint) {
    const BuiltShrinkTable table = built(0.5);
    const float slope = table.at(0, -32.0f) / -32.0f;
    EXPECT_NEAR(-10.0f * slope, table.at(0, -9.9995f), 1e-3f);
    for (const float v : {-10.001f, -20.0f, -1e6f, -1e30f}) {
        EXPECT_EQ(table.at(0, v), slope * v) << v;
    }
}

TEST(BuiltShrinkTable, AnyGradientAndAnyAlphaGiveADefinedValue) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const BuiltShrinkTable table = built(0.5);
    EXPECT_EQ(table.at(0, infinity), infinity);
    EXPECT_EQ(table.at(0, -infinity), -infinity);
    EXPECT_TRUE(std::isnan(table.at(0, nan)));
    EXPECT_EQ(built(nan).at(0, 3.0f), 0.0f);
}

} // namespace
