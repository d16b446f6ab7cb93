#pragma once

#include "restoration/blind/SquareKernel.h"
#include "restoration/blind/SquareTransform.h"
#include "restoration/planes/Plane.h"

namespace restoration {

/// Restores a square plane of the transform's side whose opposite edges join, for a comparison of
/// kernels: hyper-Laplacian prior (Krishnan, Fergus 2009) of exponent 0.5, strength 3000, no
/// limiter. Runs on the calling thread.
/// @param kernel sum 1
Plane trialRestoration(SquareTransform& transform, const Plane& picture,
                       const SquareKernel& kernel);

/// The cyclic convolution of `plane` and `kernel`.
Plane blurredCyclically(SquareTransform& transform, const Plane& plane, const SquareKernel& kernel);

} // namespace restoration
