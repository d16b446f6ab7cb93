#pragma once

#include "restoration/kernels/KernelGrid.h"
#include "velorn.h"

#include <cstdint>

namespace restoration {

/// The grid of the host's kernels.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for sides outside 1..VELORN_LARGEST_GRID_SIDE and
///         null pointers; std::bad_alloc
KernelGrid checkedGrid(const VelornKernel* const* kernels, std::int32_t columns, std::int32_t rows);

/// Checks that the kernels of `grid` (not null) fit into `source`, which has passed checkPicture.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT, VELORN_STATUS_KERNEL_TOO_LARGE
void checkGrid(const VelornKernelGrid* grid, const VelornPicture& source);

} // namespace restoration
