#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// Scales the weights to sum 1. The sum of `kernel` is above 0.
void scaleToUnitSum(SquareKernel& kernel);

} // namespace restoration
