#pragma once

#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/kernels/Kernel.h"

namespace restoration {

/// The central square of `kernel` of odd side `side`, amid zeros where `kernel` is smaller; sum 1.
/// Negative weights count as 0: kernels of the search have none.
SquareKernel squareKernelOf(const Kernel& kernel, int side);

} // namespace restoration
