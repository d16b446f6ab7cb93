#pragma once

#include "restoration/blind/analytic/KernelKind.h"
#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The Gaussian, disc or straight motion that `kind` describes, with an extent above 0; centred,
/// sum 1. Motions are continuous in their length and angle (strokeKernel).
SquareKernel kernelOfKind(const KernelKind& kind);

} // namespace restoration
