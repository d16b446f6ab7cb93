#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// blurred = k * x, cyclic. Both planes have the side of `blur`; they may be the same. Uses
/// spectrum 0 of `scratch`.
/// @throws Failure for a cancelled call; std::bad_alloc
void blurPlane(const Plane& x, const BlurSpectrum& blur, Plane& blurred, TileScratch& scratch,
               const Cancellation& cancellation);

} // namespace restoration
