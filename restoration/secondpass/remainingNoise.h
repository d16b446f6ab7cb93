#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/secondpass/DctVariances.h"

namespace restoration {

/// What the step argmin |k * z - y|^2 + weight |z - x|^2 leaves of white noise of variance 1 in y:
/// the variances of the coefficients of z.
/// @throws std::bad_alloc
DctVariances remainingNoise(const Kernel& kernel, float weight);

} // namespace restoration
