#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/tiles/Mask.h"

namespace restoration {

/// The prior of `deconvolveHyperLaplacian`.
struct HyperLaplacian {
    float strength; ///< lambda, above 0: higher values follow the blurred plane more closely
    float exponent; ///< alpha, 0..1; the next lower tenth is used
};

/// Restores a plane under a hyper-Laplacian prior on its gradients: the plane x that minimises
///
///     (strength / 2) |k * x - y|^2 + sum over pixels of (|gx|^exponent + |gy|^exponent),
///
/// by half-quadratic splitting in six passes (D. Krishnan, R. Fergus, Fast image deconvolution
/// using hyper-Laplacian priors, 2009). Convolution and differences are circular: all pixels of a
/// tile are treated alike, the ring joins its edges.
/// @param y      the blurred plane, of the side of `blur`. Its unknown pixels should hold an
///               estimate (`estimateUnknown`); they are replaced by those of k * x between passes.
/// @param known  null when all pixels count as known
/// @param x      receives the result; not `y`
/// @throws Failure for a cancelled call; std::bad_alloc
void deconvolveHyperLaplacian(Plane& y, const Mask* known, const BlurSpectrum& blur,
                              const HyperLaplacian& prior, Plane& x, TileScratch& scratch,
                              const Cancellation& cancellation);

} // namespace restoration
