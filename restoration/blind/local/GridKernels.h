#pragma once

#include "restoration/blind/local/CellKernel.h"
#include "restoration/blind/local/Cells.h"
#include "restoration/blind/squares/SquareKernel.h"

#include <vector>

namespace restoration {

/// The kernels of the cells of a picture, all of the same side.
struct GridKernels {
    Cells cells;
    SquareKernel whole;            ///< of the whole picture
    std::vector<CellKernel> found; ///< one for each cell
};

} // namespace restoration
