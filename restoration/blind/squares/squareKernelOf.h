#pragma once

#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/kernels/Kernel.h"

namespace restoration {

/// The central square of `kernel` of odd side `side`, amid zeros where `kernel` is smaller; sum 1.
/// Negative weights, which the search does not know, count as 0.
SquareKernel squareKernelOf(const Kernel& kernel, int side);

} // namespace restoration
