#pragma once

#include "restoration/kernels/Kernel.h"

#include <vector>

namespace restoration {

/// A kernel of `values`, row by row, scaled to sum 1. A sum that differs from 1 by rounding only
/// stays: the values of a kernel make the same kernel again.
///
/// The sides are valid (`checkKernelSides`), and there are width * height values.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for values that are not finite, a sum that is not
///         positive, and quotients beyond the range of floats
Kernel kernelFromValues(std::vector<float> values, int width, int height);

} // namespace restoration
