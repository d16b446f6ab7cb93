#include "velimproclib/veldeblurcv/deconvolution/betaSchedule.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(BetaSchedule, SixWeightsRiseByTwoRootsOfTwoFromOne) {
    std::vector<double> betas;
    vel::forEachBeta([&](double beta) { betas.push_back(beta); });
    ASSERT_EQ(betas.size(), 6u);
    EXPECT_EQ(betas[0], 1.0);
    EXPECT_NEAR(betas[1], 2.828427, 1e-6);
    EXPECT_NEAR(betas[2], 8.0, 1e-12);
    EXPECT_NEAR(betas[5], 181.019336, 1e-6);
}

} // namespace
