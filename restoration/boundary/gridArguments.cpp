#include "restoration/boundary/gridArguments.h"

#include "restoration/boundary/argumentChecks.h"
#include "restoration/boundary/restoreKernels.h"
#include "restoration/boundary/VelornKernelGrid.h"

#include <string>
#include <utility>
#include <vector>

namespace restoration {

KernelGrid checkedGrid(const VelornKernel* const* kernels, std::int32_t columns,
                       std::int32_t rows) {
    requireRange(columns, 1, VELORN_LARGEST_GRID_SIDE, "columns");
    requireRange(rows, 1, VELORN_LARGEST_GRID_SIDE, "rows");
    requirePointer(kernels, "kernels");
    std::vector<Kernel> copies;
    for (std::int32_t i = 0; i < columns * rows; ++i) {
        requirePointer(kernels[i], "kernels[" + std::to_string(i) + "]");
        copies.push_back(kernels[i]->kernel);
    }
    return {std::move(copies), columns, rows};
}

void checkGrid(const VelornKernelGrid* grid, const VelornPicture& source) {
    requirePointer(grid, "grid");
    for (const VelornKernel& cell : grid->cells) {
        requireFit(cell.kernel, source);
    }
}

} // namespace restoration
