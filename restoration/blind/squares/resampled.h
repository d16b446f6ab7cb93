#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// Resamples a kernel linearly on a grid whose pitch is `pitch` pixels of `kernel`, about the
/// centre; sum 1.
SquareKernel resampled(const SquareKernel& kernel, int side, double pitch);

} // namespace restoration
