#include "restoration/blind/local/QuarterStarts.h"

#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

/// A kernel with its weight in column `column` of the middle row of seven.
SquareKernel pointAt(int column) {
    SquareKernel kernel(7);
    kernel.at(3, column) = 1.0;
    return kernel;
}

std::vector<std::size_t> cellsOf(std::size_t quarter, const Cells& cells) {
    std::vector<std::size_t> numbers;
    for (const WeightedCell& each : cellsAround(quarter, cells)) {
        numbers.push_back(each.cell);
    }
    return numbers;
}

using Numbers = std::vector<std::size_t>;

TEST(QuarterStarts, TheCellsAroundAreTheNearestOnes) {
    const Cells cells{3, 2}; // quarters: 6 by 4
    EXPECT_EQ(cellsOf(1 * 6 + 2, cells), (Numbers{1, 0, 4, 3}));
    EXPECT_EQ(cellsOf(1 * 6 + 3, cells), (Numbers{1, 2, 4, 5}));
    EXPECT_EQ(cellsOf(2 * 6 + 3, cells), (Numbers{4, 5, 1, 2}));
    EXPECT_EQ(cellsOf(0, cells), (Numbers{0, 0, 0, 0}));
    EXPECT_EQ(cellsOf(3 * 6 + 5, cells), (Numbers{5, 5, 5, 5}));
}

TEST(QuarterStarts, KernelsAreInterpolatedAtTheMiddleOfTheQuarter) {
    const GridKernels coarse{
        {2, 2}, pointAt(0), std::vector<CellKernel>(4, CellKernel{.kernel = pointAt(0)})};
    const std::vector<SquareKernel> smooth{pointAt(1), pointAt(2), pointAt(3), pointAt(4)};
    const SquareKernel mean = startsOf(1 * 4 + 1, coarse, smooth).kernels.front();
    EXPECT_EQ(mean.at(3, 1), 0.5625);
    EXPECT_EQ(mean.at(3, 2), 0.1875);
    EXPECT_EQ(mean.at(3, 3), 0.1875);
    EXPECT_EQ(mean.at(3, 4), 0.0625);
}

TEST(QuarterStarts, BeginWithTheKernelsAroundButNotWithSharpOnes) {
    GridKernels coarse{
        {2, 2}, pointAt(0), std::vector<CellKernel>(4, CellKernel{.kernel = pointAt(0)})};
    coarse.found[0].agreement = 0.8;
    coarse.found[2].agreement = 0.4;
    coarse.found[1].isSharp = true;
    coarse.found[1].agreement = 1.0;
    const std::vector<SquareKernel> smooth{pointAt(1), pointAt(2), pointAt(3), pointAt(4)};
    const QuarterStarts starts = startsOf(1 * 4 + 1, coarse, smooth);
    ASSERT_EQ(starts.kernels.size(), 4U);
    EXPECT_EQ(starts.kernels[1].values, pointAt(1).values);
    EXPECT_EQ(starts.kernels[2].values, pointAt(3).values);
    EXPECT_EQ(starts.kernels[3].values, pointAt(4).values);
    EXPECT_DOUBLE_EQ(starts.agreement, 0.5625 * 0.8 + 0.1875 * 0.4 + 0.1875);
}

} // namespace
} // namespace restoration
