#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// Removes weights below `threshold` times the largest one, then 8-connected pieces lighter than a
/// tenth of the heaviest one, and scales the sum to 1. The sum of `kernel` is above 0.
void removeSpecks(double threshold, SquareKernel& kernel);

} // namespace restoration
