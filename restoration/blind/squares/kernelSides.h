#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The side of the smallest centred square that holds all weights; 1 at least.
int extentOf(const SquareKernel& kernel);

/// The central square of side `side`, or the kernel amid zeros where `side` is larger; the sum is
/// scaled to 1.
SquareKernel withSide(const SquareKernel& kernel, int side);

} // namespace restoration
