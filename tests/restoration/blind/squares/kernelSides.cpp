#include "restoration/blind/squares/kernelSides.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(KernelSides, ExtentIsThatOfTheFarthestWeight) {
    SquareKernel kernel(9);
    kernel.at(4, 4) = 1.0;
    EXPECT_EQ(extentOf(kernel), 1);
    kernel.at(5, 1) = 0.1;
    EXPECT_EQ(extentOf(kernel), 7);
}

TEST(KernelSides, AnotherSideKeepsTheCentre) {
    SquareKernel kernel(5);
    kernel.at(2, 2) = 0.6;
    kernel.at(2, 3) = 0.4;
    const SquareKernel wide = withSide(kernel, 9);
    EXPECT_NEAR(wide.at(4, 4), 0.6, 1e-12);
    EXPECT_NEAR(wide.at(4, 5), 0.4, 1e-12);
    const SquareKernel narrow = withSide(kernel, 1);
    EXPECT_EQ(narrow.at(0, 0), 1.0);
}

} // namespace
} // namespace restoration
