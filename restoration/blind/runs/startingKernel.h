#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// A Gaussian of 0.8 pixels, sum 1.
SquareKernel startingKernel(int side);

} // namespace restoration
