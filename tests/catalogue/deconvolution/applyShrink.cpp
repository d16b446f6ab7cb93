#include "velimproclib/catalogue/deconvolution/applyShrink.h"

#include "velimproclib/veldeblurcv/deconvolution/betaSchedule.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace vel;
using Plane = cv::Mat_<float>;

/// shrink(v) at the first weight, by a plane with `v` in its last corner.
float shrunk(double alpha, float v) {
    Plane plane(3, 5, 0.0f);
    plane(2, 4) = v;
    Plane w(3, 5, -1.0f);
    applyShrink(w, plane, alpha, kFirstBeta);
    return w(2, 4);
}

TEST(ApplyShrink, AlphaZeroIsTheHardThresholdAtTheRootOfTwo) {
    EXPECT_EQ(shrunk(0.0, 1.4f), 0.0f);
    EXPECT_EQ(shrunk(0.0, 1.4143f), 1.4143f);
}

TEST(ApplyShrink, AlphaOneIsTheSoftThresholdAtOne) {
    EXPECT_EQ(shrunk(1.0, 2.0f), 1.0f);
    EXPECT_EQ(shrunk(1.0, 0.5f), 0.0f);
}

TEST(ApplyShrink, AlphaOneHalfJumpsToTwoThirdsOfTheThreshold) {
    EXPECT_EQ(shrunk(0.5, 1.49f), 0.0f);
    EXPECT_EQ(shrunk(0.5, 1.5001f), 1.00013f);
}

TEST(ApplyShrink, StoredTableClampsTheGradientsInPlace) {
    Plane v(4, 4, 0.0f);
    v(0, 0) = 25.0f;
    v(1, 1) = -25.0f;
    v(2, 2) = std::nanf("");
    Plane w(4, 4, -1.0f);
    applyShrink(w, v, 0.5, kFirstBeta);
    EXPECT_EQ(v(0, 0), 10.0f);
    EXPECT_EQ(w(0, 0), 10.0f) << "the last level is outside of the lookup and stays as it is";
    EXPECT_EQ(v(1, 1), -10.0f);
    EXPECT_EQ(w(1, 1), -9.84061f);
    EXPECT_TRUE(std::isnan(w(2, 2)));
    EXPECT_EQ(w(3, 3), 0.0f);
}

TEST(ApplyShrink, TheLevelFollowsTheWeightInBothTables) {
    const double lastBeta = std::pow(kBetaRate, 5);
    BuiltShrinkTable table;
    table.allocate(5);
    table.build(0.5, kBetaRate, 4);
    Plane v(1, 1, 0.05f);
    Plane stored(1, 1);
    Plane built(1, 1);
    applyShrink(stored, v, 0.5, kFirstBeta);
    applyShrink(built, v, table, kFirstBeta);
    EXPECT_EQ(stored(0, 0), 0.0f);
    EXPECT_EQ(built(0, 0), 0.0f);
    applyShrink(stored, v, 0.5, lastBeta);
    applyShrink(built, v, table, lastBeta);
    EXPECT_GT(stored(0, 0), 0.03f);
    EXPECT_NEAR(built(0, 0), stored(0, 0), 2e-3f);
}

TEST(ApplyShrink, BuiltTableLeavesTheGradientsAsTheyAre) {
    BuiltShrinkTable table;
    table.allocate(0);
    table.build(0.5, kBetaRate, 4);
    Plane v(4, 4, 0.0f);
    v(0, 0) = 1.49f;
    v(0, 1) = 1.5001f;
    v(1, 1) = -25.0f;
    Plane w(4, 4, -1.0f);
    applyShrink(w, v, table, kFirstBeta);
    EXPECT_EQ(w(0, 0), 0.0f);
    EXPECT_NEAR(w(0, 1), 1.00013f, 2e-4);
    EXPECT_EQ(w(1, 1), table.at(0, -25.0f));
    EXPECT_EQ(v(1, 1), -25.0f);
    EXPECT_EQ(w(3, 3), 0.0f);
}

} // namespace
