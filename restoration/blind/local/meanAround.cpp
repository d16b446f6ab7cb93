#include "restoration/blind/local/meanAround.h"

#include <algorithm>
#include <cstdlib>

namespace restoration {
namespace {

/// The weight of a neighbour, over that of the cell.
constexpr double kNeighbour = 0.1;
constexpr double kDiagonalNeighbour = 0.5 * kNeighbour;
/// Of the kernel of the whole picture: faint, for cells all of whose neighbours are unreliable.
constexpr double kWhole = 0.01;

void add(const SquareKernel& kernel, double weight, SquareKernel& sum) {
    for (std::size_t i = 0; i < sum.values.size(); ++i) {
        sum.values[i] += weight * kernel.values[i];
    }
}

void divideBySum(SquareKernel& kernel) {
    double total = 0.0;
    for (const double value : kernel.values) {
        total += value;
    }
    for (double& value : kernel.values) {
        value /= total;
    }
}

double shareOf(int right, int down, double own) {
    switch (std::abs(right) + std::abs(down)) {
    case 0:
        return own;
    case 1:
        return kNeighbour;
    default:
        return kDiagonalNeighbour;
    }
}

} // namespace

SquareKernel meanAround(const GridKernels& kernels, std::size_t cell, double own) {
    const Cells& cells = kernels.cells;
    const int column = cells.columnOf(cell);
    const int row = cells.rowOf(cell);
    SquareKernel mean(kernels.whole.side);
    add(kernels.whole, kWhole, mean);
    for (int y = std::max(row - 1, 0); y <= std::min(row + 1, cells.rows - 1); ++y) {
        for (int x = std::max(column - 1, 0); x <= std::min(column + 1, cells.columns - 1); ++x) {
            const CellKernel& found = kernels.found[cells.at(x, y)];
            const double weight = shareOf(x - column, y - row, own) * found.weight();
            if (weight > 0.0) {
                add(found.kernel, weight, mean);
            }
        }
    }
    divideBySum(mean);
    return mean;
}

std::vector<SquareKernel> smoothed(const GridKernels& kernels) {
    std::vector<SquareKernel> smooth;
    for (std::size_t i = 0; i < kernels.found.size(); ++i) {
        const CellKernel& found = kernels.found[i];
        smooth.push_back(found.isSharp ? found.kernel : meanAround(kernels, i, 1.0));
    }
    return smooth;
}

} // namespace restoration
