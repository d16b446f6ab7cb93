#include "restoration/blind/squares/largestVariance.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(LargestVariance, IsZeroForAPointAnywhere) {
    SquareKernel kernel(7);
    kernel.at(1, 6) = 0.5;
    EXPECT_NEAR(largestVariance(kernel), 0.0, 1e-12);
}

TEST(LargestVariance, IsThatAlongALine) {
    SquareKernel level(7);
    SquareKernel diagonal(7);
    for (int i = 1; i < 6; ++i) {
        level.at(4, i) = 1.0;
        diagonal.at(i, i) = 1.0;
    }
    EXPECT_NEAR(largestVariance(level), 2.0, 1e-12);
    EXPECT_NEAR(largestVariance(diagonal), 4.0, 1e-12);
}

} // namespace
} // namespace restoration
