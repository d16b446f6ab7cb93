#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// A picture reduced to `scale` times its size, 0 < scale <= 1; a copy for 1.
///
/// Blurred by a Gaussian of 0.5 sqrt(1 / scale^2 - 1) pixels, then resampled bicubically at the
/// exact pitch 1 / scale about the centre, so that the blur of the picture shrinks by `scale` too.
/// The sides are those of the picture times `scale`, rounded.
Plane reduced(const Plane& picture, double scale, const Cancellation& cancellation);

/// A square plane of side `side` whose top left part is `picture` and whose rest joins opposite
/// edges of the picture smoothly: linear blends of the last and the first column (row), softened
/// along the edge by a Gaussian in the middle of the strip. `side` exceeds the picture's sides.
Plane wrappedAround(const Plane& picture, int side, const Cancellation& cancellation);

} // namespace restoration
