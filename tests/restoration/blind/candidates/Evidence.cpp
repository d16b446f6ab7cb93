#include "restoration/blind/candidates/Evidence.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(Evidence, EachPartIsWeighedOnce) {
    for (const EvidenceWeight& part : kEvidenceWeights) {
        Evidence evidence;
        evidence.*part.value = 2.0;
        EXPECT_NEAR(scoreOf(evidence) - scoreOf(Evidence()), 2.0 * part.score, 1e-12) << part.name;
    }
}

TEST(Evidence, WidthGrowsWithTheVarianceAlongTheLongerAxis) {
    SquareKernel kernel(5);
    kernel.at(2, 2) = 1.0;
    EXPECT_EQ(widthOf(kernel), 0.0);
    kernel.at(2, 2) = 0.0;
    kernel.at(0, 2) = 0.5;
    kernel.at(4, 2) = 0.5;
    EXPECT_NEAR(widthOf(kernel), std::log(5.0), 1e-12);
}

TEST(Evidence, WorseExplanationsScoreHigher) {
    for (double Evidence::*part : {&Evidence::sparsity, &Evidence::residual,
                                   &Evidence::spectralMisfit, &Evidence::reachesRim}) {
        Evidence worse;
        worse.*part = 1.0;
        EXPECT_GT(scoreOf(worse), scoreOf(Evidence()));
    }
    Evidence analytic;
    analytic.isAnalytic = 1.0;
    EXPECT_LT(scoreOf(analytic), scoreOf(Evidence()));
}

TEST(Evidence, ConfidenceRisesWithTheAgreementAndFallsWithTheUnevenness) {
    Evidence weak;
    Evidence agreed;
    agreed.agreement = 1.0;
    Evidence uneven;
    uneven.unevenness = 1.0;
    EXPECT_GT(confidenceIn(agreed), confidenceIn(weak));
    EXPECT_LT(confidenceIn(uneven), confidenceIn(weak));
    for (const Evidence& evidence : {weak, agreed, uneven}) {
        EXPECT_GT(confidenceIn(evidence), 0.0);
        EXPECT_LT(confidenceIn(evidence), 1.0);
    }
}

TEST(TrustIn, FreeKernelsAreTrustedLessThanAnalyticOnes) {
    Evidence analytic;
    analytic.isAnalytic = 1.0;
    EXPECT_EQ(trustIn(analytic, 0.9).strongest, Trust().strongest);
    EXPECT_LE(trustIn(Evidence(), 0.9).strongest, 3000.0f);
}

TEST(TrustIn, TheShareOfTheRestorationRisesWithTheConfidence) {
    EXPECT_EQ(trustIn(Evidence(), 0.05).share, 0.0f);
    float last = 0.0f;
    for (const double confidence : {0.15, 0.25, 0.35, 0.45}) {
        const float share = trustIn(Evidence(), confidence).share;
        EXPECT_GT(share, last);
        EXPECT_LT(share, 1.0f);
        last = share;
    }
    EXPECT_EQ(trustIn(Evidence(), 0.9).share, 1.0f);
}

} // namespace
} // namespace restoration
