#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The kernel of a point that moves evenly along a straight stroke of `stroke` pixels, at least 0,
/// each place distributed linearly among the four pixels around it; centred, sum 1. Continuous in
/// both arguments. `velornMakeKernel` calls stroke + 1 the length of a motion.
/// @param degrees counter-clockwise from the horizontal
SquareKernel strokeKernel(double stroke, double degrees);

} // namespace restoration
