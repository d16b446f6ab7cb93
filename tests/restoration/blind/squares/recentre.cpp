#include "restoration/blind/squares/recentre.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(Recentre, MovesTheCentreOfMassByWholePixels) {
    SquareKernel kernel(7);
    kernel.at(1, 5) = 0.5;
    kernel.at(2, 6) = 0.5; // centre of mass: one and a half up, two and a half to the right
    recentre(kernel);
    EXPECT_NEAR(kernel.sum(), 1.0, 1e-12);
    EXPECT_EQ(kernel.at(2, 2), 0.5);
    EXPECT_EQ(kernel.at(3, 3), 0.5);
}

TEST(Recentre, DropsWhatFallsOffAndKeepsTheSum) {
    SquareKernel kernel(5);
    kernel.at(2, 4) = 0.9;
    kernel.at(2, 0) = 0.1;
    recentre(kernel);
    EXPECT_EQ(kernel.at(2, 2), 1.0);
    EXPECT_NEAR(kernel.sum(), 1.0, 1e-12);
}

} // namespace
} // namespace restoration
