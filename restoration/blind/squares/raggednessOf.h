#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The entropy of the weights less the logarithm of the standard deviations along both axes of the
/// kernel: small for scattered weights and for kernels with a dark middle.
double raggednessOf(const SquareKernel& kernel);

} // namespace restoration
