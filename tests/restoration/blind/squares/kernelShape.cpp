#include "restoration/blind/squares/kernelShape.h"

#include <gtest/gtest.h>
#include <numeric>

namespace restoration {
namespace {

double sumOf(const SquareKernel& kernel) {
    return std::accumulate(kernel.values.begin(), kernel.values.end(), 0.0);
}

TEST(KernelShape, StartingKernelIsAGaussianOfUnitSum) {
    const SquareKernel kernel = startingKernel(7);
    EXPECT_NEAR(sumOf(kernel), 1.0, 1e-12);
    EXPECT_NEAR(kernel.at(3, 4) / kernel.at(3, 3), std::exp(-0.5 / 0.64), 1e-12);
    EXPECT_EQ(kernel.at(3, 5), kernel.at(1, 3));
}

TEST(KernelShape, SpecksBelowTheThresholdAndLightPiecesGo) {
    SquareKernel kernel(9);
    kernel.at(4, 4) = 1.0;
    kernel.at(4, 5) = 0.5;
    kernel.at(5, 6) = 0.1;   // touches a corner: the same piece
    kernel.at(4, 3) = 0.049; // below the threshold
    kernel.at(0, 0) = 0.1;   // alone, lighter than a tenth
    kernel.at(8, 8) = 0.2;   // alone, heavy enough
    removeSpecks(0.05, kernel);
    EXPECT_EQ(kernel.at(4, 3), 0.0);
    EXPECT_EQ(kernel.at(0, 0), 0.0);
    EXPECT_NEAR(kernel.at(5, 6), 0.1 / 1.8, 1e-12);
    EXPECT_NEAR(kernel.at(8, 8), 0.2 / 1.8, 1e-12);
    EXPECT_NEAR(sumOf(kernel), 1.0, 1e-12);
}

TEST(KernelShape, RecentringMovesTheCentreOfMassByWholePixels) {
    SquareKernel kernel(7);
    kernel.at(1, 5) = 0.5;
    kernel.at(2, 6) = 0.5; // centre of mass: one and a half up, two and a half to the right
    recentre(kernel);
    EXPECT_NEAR(sumOf(kernel), 1.0, 1e-12);
    EXPECT_EQ(kernel.at(2, 2), 0.5);
    EXPECT_EQ(kernel.at(3, 3), 0.5);
}

TEST(KernelShape, RecentringDropsWhatFallsOffAndKeepsTheSum) {
    SquareKernel kernel(5);
    kernel.at(2, 4) = 0.9;
    kernel.at(2, 0) = 0.1;
    recentre(kernel);
    EXPECT_EQ(kernel.at(2, 2), 1.0);
    EXPECT_NEAR(sumOf(kernel), 1.0, 1e-12);
}

TEST(KernelShape, ResamplingKeepsTheCentreAndScalesDistances) {
    SquareKernel kernel(5);
    kernel.at(2, 2) = 0.5;
    kernel.at(2, 3) = 0.5;
    const SquareKernel fine = resampled(kernel, 9, 0.5);
    EXPECT_NEAR(sumOf(fine), 1.0, 1e-12);
    EXPECT_NEAR(fine.at(4, 4), fine.at(4, 6), 1e-12);
    EXPECT_NEAR(fine.at(4, 5), fine.at(4, 4), 1e-12);
    EXPECT_NEAR(fine.at(3, 4), 0.5 * fine.at(4, 4), 1e-12);
    EXPECT_EQ(fine.at(4, 2), 0.0);
}

TEST(KernelShape, ExtentIsThatOfTheFarthestWeight) {
    SquareKernel kernel(9);
    kernel.at(4, 4) = 1.0;
    EXPECT_EQ(extentOf(kernel), 1);
    kernel.at(5, 1) = 0.1;
    EXPECT_EQ(extentOf(kernel), 7);
}

TEST(KernelShape, AnotherSideKeepsTheCentre) {
    SquareKernel kernel(5);
    kernel.at(2, 2) = 0.6;
    kernel.at(2, 3) = 0.4;
    const SquareKernel wide = withSide(kernel, 9);
    EXPECT_NEAR(wide.at(4, 4), 0.6, 1e-12);
    EXPECT_NEAR(wide.at(4, 5), 0.4, 1e-12);
    const SquareKernel narrow = withSide(kernel, 1);
    EXPECT_EQ(narrow.at(0, 0), 1.0);
}

TEST(KernelShape, LikenessIgnoresShiftsAndSeesOrientation) {
    SquareKernel hook(9);
    for (int row = 2; row < 7; ++row) {
        hook.at(row, 4) = 0.15;
    }
    hook.at(6, 5) = 0.25;
    SquareKernel moved(11);
    for (int row = 0; row < 9; ++row) {
        for (int column = 0; column < 9; ++column) {
            moved.at(row, column) = hook.at(row, column);
        }
    }
    EXPECT_NEAR(likeness(hook, moved), 1.0, 1e-12);
    SquareKernel turned = hook;
    std::ranges::reverse(turned.values);
    EXPECT_LT(likeness(hook, turned), 0.9);
}

TEST(RaggednessOf, IsLowerForScatteredWeightsThanForAFullDisc) {
    SquareKernel full(9);
    std::ranges::fill(full.values, 1.0 / 81.0);
    SquareKernel scattered(9);
    for (const int row : {0, 4, 8}) {
        for (const int column : {0, 4, 8}) {
            scattered.at(row, column) = 1.0 / 9.0;
        }
    }
    EXPECT_GT(raggednessOf(full), raggednessOf(scattered) + 1.0);
}

} // namespace
} // namespace restoration
