#pragma once

#include "restoration/blind/local/Cells.h"
#include "restoration/blind/local/GridKernels.h"
#include "restoration/blind/squares/SquareKernel.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace restoration {

/// A cell and its weight in a mean.
struct WeightedCell {
    std::size_t cell = 0;
    double weight = 0.0;
};

/// The cells of `cells` around the middle of a quarter, which is a cell of `cells.divided()`: the
/// one that it belongs to, then the nearest ones beside it, above or below, and across the corner,
/// with the weights of linear interpolation between the middles of cells. At the rim of the picture
/// cells repeat.
std::array<WeightedCell, 4> cellsAround(std::size_t quarter, const Cells& cells);

/// What the search in a quarter of a cell begins with.
struct QuarterStarts {
    /// The largest number of kernels.
    static constexpr std::size_t kMost = 5;

    /// The mean of the kernels around the quarter, then those of them that are not sharp.
    std::vector<SquareKernel> kernels;
    /// The mean agreement of the cells around.
    double agreement = 0.0;
};

/// @param smooth  the kernels of the cells of `coarse`, smoothed over neighbours
QuarterStarts startsOf(std::size_t quarter, const GridKernels& coarse,
                       std::span<const SquareKernel> smooth);

} // namespace restoration
