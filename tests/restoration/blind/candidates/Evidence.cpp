#include "restoration/blind/candidates/Evidence.h"

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

TEST(Evidence, WorseExplanationsScoreHigher) {
    for (double Evidence::*part :
         {&Evidence::sparsity, &Evidence::residual, &Evidence::reachesRim}) {
        Evidence worse;
        worse.*part = 1.0;
        EXPECT_GT(scoreOf(worse), scoreOf(Evidence()));
    }
    Evidence analytic;
    analytic.isAnalytic = 1.0;
    EXPECT_LT(scoreOf(analytic), scoreOf(Evidence()));
}

} // namespace
} // namespace restoration
