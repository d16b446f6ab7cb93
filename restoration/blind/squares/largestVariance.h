#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The variance of a kernel in the direction in which it is largest, in square pixels. The sum of
/// the kernel is above 0.
double largestVariance(const SquareKernel& kernel);

} // namespace restoration
