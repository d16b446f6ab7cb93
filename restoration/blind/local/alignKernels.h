#pragma once

#include "restoration/blind/local/GridKernels.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// Moves the kernels of cells, by parts of pixels, so that they agree in position: first their
/// centres of mass, then each onto the mean of its neighbours. The mean of the centres of mass,
/// weighted by reliability, is in the middle then.
///
/// Kernels that are moved against each other restore cells that are moved against each other.
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
void alignKernels(GridKernels& kernels, const Cancellation& cancellation);

} // namespace restoration
