#include "restoration/blind/local/judgeGrid.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

SquareKernel row(double left, double middle, double right) {
    SquareKernel kernel(3);
    kernel.at(1, 0) = left;
    kernel.at(1, 1) = middle;
    kernel.at(1, 2) = right;
    return kernel;
}

/// Four cells that agree with themselves.
GridKernels fourCells() {
    const CellKernel cell{.kernel = row(0.5, 0.0, 0.5), .agreement = 1.0};
    return {{2, 2}, row(0.5, 0.0, 0.5), std::vector<CellKernel>(4, cell)};
}

TEST(JudgeGrid, MoreThanHalfOfTheCellsMustShowABlur) {
    GridKernels kernels = fourCells();
    EXPECT_TRUE(showsBlur(kernels));
    kernels.found[0].isContradicted = true;
    EXPECT_TRUE(showsBlur(kernels));
    kernels.found[3].isContradicted = true;
    EXPECT_FALSE(showsBlur(kernels));
}

TEST(JudgeGrid, SharpCellsAndCellsWithoutEdgesShowNoBlur) {
    GridKernels kernels = fourCells();
    kernels.found[1].isSharp = true;
    EXPECT_TRUE(showsBlur(kernels));
    kernels.found[2].agreement = 0.0;
    EXPECT_FALSE(showsBlur(kernels));
}

TEST(JudgeGrid, AgreementIsTheMeanOfTheCellsWithEdges) {
    GridKernels kernels = fourCells();
    kernels.found[0].agreement = 0.0;
    kernels.found[1].agreement = 0.4;
    EXPECT_DOUBLE_EQ(meanAgreement(kernels), 0.8);
    for (CellKernel& found : kernels.found) {
        found.agreement = 0.0;
    }
    EXPECT_EQ(meanAgreement(kernels), 0.0);
}

TEST(JudgeGrid, UnreliableAndSharpCellsDoNotDifferFromTheWholePicture) {
    GridKernels kernels = fourCells();
    EXPECT_DOUBLE_EQ(likenessToWhole(kernels), 1.0);
    kernels.found[0].kernel = row(0.0, 1.0, 0.0);
    kernels.found[0].agreement = 0.0;
    kernels.found[1].kernel = row(0.0, 1.0, 0.0);
    kernels.found[1].isSharp = true;
    EXPECT_DOUBLE_EQ(likenessToWhole(kernels), 1.0);
    kernels.found[2].kernel = row(0.0, 1.0, 0.0); // likeness 0.5 / (sqrt(0.5) * 1)
    EXPECT_NEAR(likenessToWhole(kernels), (1.0 + std::sqrt(0.5)) / 2.0, 1e-12);
}

} // namespace
} // namespace restoration
