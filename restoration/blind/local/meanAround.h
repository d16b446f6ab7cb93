#pragma once

#include "restoration/blind/local/GridKernels.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// The mean of the kernels of the eight cells around `cell`, and of its own one, with weights by
/// reliability (`CellKernel::weight`): 0.1 beside, above and below, 0.05 across corners, `own` for
/// the cell. The kernel of the whole picture has the weight 0.01, and counts alone where no cell is
/// reliable. Sum 1.
SquareKernel meanAround(const GridKernels& kernels, std::size_t cell, double own);

/// The kernels smoothed over neighbouring cells: `meanAround` with the weight 1 for each cell.
/// Sharp cells keep theirs.
std::vector<SquareKernel> smoothed(const GridKernels& kernels);

} // namespace restoration
