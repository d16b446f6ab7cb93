#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/tiles/Mask.h"

namespace restoration {

/// Estimates the unknown pixels of a blurred plane from the known ones, as a restoration explains
/// them: each of five passes restores the completed plane with a quadratic prior, blurs the
/// restoration again, and takes its unknown pixels (expectation maximisation). The weight of the
/// prior falls from pass to pass: the first passes settle what lies far from known pixels, the last
/// ones the detail. A pass starts from an extrapolation of the last two estimates (Y. Nesterov, A
/// method of solving a convex programming problem with convergence rate O(1/k^2), 1983): five such
/// passes do more than twelve plain ones.
/// @param y      a plane of the side of `blur`; its unknown pixels hold a first estimate (a smooth
///               continuation) and receive the result
/// @throws Failure for a cancelled call; std::bad_alloc
void estimateUnknown(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
                     const Cancellation& cancellation);

/// Continues `estimateUnknown` for clipped pixels. What they hide may be many times brighter than
/// what surrounds them, and five passes do not get there: 16 more, with Nesterov's rising momentum
/// and a weight of 0.0005, halve the rings that remain around lamps.
/// @throws Failure for a cancelled call; std::bad_alloc
void estimateClipped(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
                     const Cancellation& cancellation);

} // namespace restoration
