#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// Restores a plane under a quadratic prior on its gradients: the plane x that minimises
///
///     |k * x - y|^2 + weight |grad(x - mean)|^2,
///
/// with circular convolution and circular forward differences (Tikhonov regularisation; one
/// division for each frequency).
/// @param y       the blurred plane, of the side of `blur`
/// @param weight  above 0; higher values restore less
/// @param mean    a plane of the same side whose gradients the result approaches where the blur
///                leaves nothing; null: 0
/// @param x       receives the result; may be `y` or `mean`
/// @throws Failure for a cancelled call; std::bad_alloc
void deconvolveQuadratic(const Plane& y, const BlurSpectrum& blur, float weight, const Plane* mean,
                         Plane& x, TileScratch& scratch, const Cancellation& cancellation);

} // namespace restoration
