#include "restoration/strength/Fit.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

// 100 pixels of residual 4 each, a tenth of the freedom.
constexpr Fit kFit{100, 400.0, 10.0};

TEST(RiskOf, IsSteinsEstimateForTheNoiseThatTheResidualShows) {
    EXPECT_DOUBLE_EQ(riskOf(kFit, {2.4, false}), 4.0 + 2.0 * 2.4 * 2.4 * 0.1);
}

TEST(RiskOf, IsCrossValidationWhereTheNoiseIsUnderestimated) {
    EXPECT_DOUBLE_EQ(riskOf(kFit, {0.0, false}), 4.0 / 0.81);
}

TEST(RiskOf, LimitsNoiseThatTheResidualDoesNotShow) {
    EXPECT_DOUBLE_EQ(riskOf(kFit, {1000.0, false}), 4.0 + 2.0 * 1.6 * (4.0 / 0.9) * 0.1);
}

TEST(RiskOf, TakesMoreThanTheNoiseForCorrelatedErrors) {
    EXPECT_DOUBLE_EQ(riskOf(kFit, {5.0, true}), 4.0 + 2.0 * 1.21 * 25.0 * 0.1);
}

TEST(RiskOf, IsFiniteWhenTheRestorationFollowsEverything) {
    EXPECT_LT(riskOf({100, 1.0, 150.0}, {1.0, false}), 1000.0);
}

TEST(Fit, AddsSums) {
    Fit sum{10, 20.0, 3.0};
    sum.add({1, 2.0, 0.5});
    EXPECT_EQ(sum.pixels, 11u);
    EXPECT_EQ(sum.residual, 22.0);
    EXPECT_EQ(sum.divergence, 3.5);
}

} // namespace
} // namespace restoration
