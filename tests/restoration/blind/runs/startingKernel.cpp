#include "restoration/blind/runs/startingKernel.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(StartingKernel, IsAGaussianOfUnitSum) {
    const SquareKernel kernel = startingKernel(7);
    EXPECT_NEAR(kernel.sum(), 1.0, 1e-12);
    EXPECT_NEAR(kernel.at(3, 4) / kernel.at(3, 3), std::exp(-0.5 / 0.64), 1e-12);
    EXPECT_EQ(kernel.at(3, 5), kernel.at(1, 3));
}

} // namespace
} // namespace restoration
