#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/tiles/Mask.h"
#include "restoration/work/Cancellation.h"

namespace restoration {

/// Estimates the unknown pixels of a blurred plane from the known ones, as a restoration explains
/// them: with x(z) = argmin |k * x - z|^2 + weight |grad x|^2 the restoration of the completed
/// plane z, the unknown pixels of z approach those of k * x(z). That condition is a system of
/// linear equations with a symmetric positive definite matrix, because z to k * x(z) is a filter
/// with gains from 0 to 1. Conjugate gradients solve it in a few steps for a sequence of falling
/// weights: the first ones settle what lies far from known pixels, the last one the detail.
/// @param y      a plane of the side of `blur`; its unknown pixels hold a first estimate (a smooth
///               continuation) and receive the result
/// @param known  at least one pixel is known
/// @throws Failure for a cancelled call; std::bad_alloc
void estimateUnknown(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
                     const Cancellation& cancellation);

} // namespace restoration
