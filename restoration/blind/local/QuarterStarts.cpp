#include "restoration/blind/local/QuarterStarts.h"

#include <algorithm>

namespace restoration {
namespace {

/// The neighbour along an axis that is nearest to the middle of a quarter, within the picture.
int nearestNeighbour(int quarter, int cells) {
    const int direction = quarter % 2 == 0 ? -1 : 1;
    return std::clamp(quarter / 2 + direction, 0, cells - 1);
}

} // namespace

std::array<WeightedCell, 4> cellsAround(std::size_t quarter, const Cells& cells) {
    constexpr double kNear = 0.75;
    constexpr double kFar = 0.25;
    const Cells quarters = cells.divided();
    const int ownColumn = quarters.columnOf(quarter) / 2;
    const int ownRow = quarters.rowOf(quarter) / 2;
    const int column = nearestNeighbour(quarters.columnOf(quarter), cells.columns);
    const int row = nearestNeighbour(quarters.rowOf(quarter), cells.rows);
    return {{{cells.at(ownColumn, ownRow), kNear * kNear},
             {cells.at(column, ownRow), kFar * kNear},
             {cells.at(ownColumn, row), kNear * kFar},
             {cells.at(column, row), kFar * kFar}}};
}

QuarterStarts startsOf(std::size_t quarter, const GridKernels& coarse,
                       std::span<const SquareKernel> smooth) {
    SquareKernel mean(coarse.whole.side);
    QuarterStarts starts{{mean}, 0.0};
    for (const auto& [cell, weight] : cellsAround(quarter, coarse.cells)) {
        const SquareKernel& kernel = smooth[cell];
        for (std::size_t i = 0; i < mean.values.size(); ++i) {
            mean.values[i] += weight * kernel.values[i];
        }
        starts.agreement += weight * coarse.found[cell].agreement;
        if (!coarse.found[cell].isSharp) {
            starts.kernels.push_back(kernel);
        }
    }
    starts.kernels.front() = mean;
    return starts;
}

} // namespace restoration
