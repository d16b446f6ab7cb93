#pragma once

#include "restoration/kernels/Kernel.h"
#include "velorn.h"

namespace restoration {

/// The kernel of a Gaussian, disc or motion blur of `extent` pixels (see VelornBlur). Sum 1 up to
/// rounding. `angle` in degrees, counter-clockwise from the horizontal, counts for motion only.
///
/// `extent` must be above 0 and finite, `angle` finite.
/// @throws Failure VELORN_STATUS_KERNEL_TOO_LARGE for sides above VELORN_LARGEST_KERNEL_SIDE
Kernel analyticKernel(VelornBlur blur, float extent, float angle);

} // namespace restoration
