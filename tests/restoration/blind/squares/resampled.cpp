#include "restoration/blind/squares/resampled.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(Resampled, KeepsTheCentreAndScalesDistances) {
    SquareKernel kernel(5);
    kernel.at(2, 2) = 0.5;
    kernel.at(2, 3) = 0.5;
    const SquareKernel fine = resampled(kernel, 9, 0.5);
    EXPECT_NEAR(fine.sum(), 1.0, 1e-12);
    EXPECT_NEAR(fine.at(4, 4), fine.at(4, 6), 1e-12);
    EXPECT_NEAR(fine.at(4, 5), fine.at(4, 4), 1e-12);
    EXPECT_NEAR(fine.at(3, 4), 0.5 * fine.at(4, 4), 1e-12);
    EXPECT_EQ(fine.at(4, 2), 0.0);
}

} // namespace
} // namespace restoration
