#pragma once

#include "restoration/chroma/ChromaPrior.h"
#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// Restores a chroma plane. The quadratic restoration (`deconvolveQuadratic`) is followed by three
/// passes that draw the gradients towards those of the previous result, each multiplied by a gain
/// that is near 1 where gradients stand out from their noise and 0 where they are noise:
///
///     x = argmin |k * x - y|^2 + c weight |grad x - gain grad x'|^2,   gain = e / (e + 9 noise),
///
/// with e the mean of |grad x'|^2 over 3 by 3 pixels, x' the previous result, and c = 1, 1, 3 (the
/// splitting of the hyper-Laplacian restoration with a local Wiener gain in place of the shrink
/// function; J. S. Lee, IEEE Transactions on Pattern Analysis and Machine Intelligence 1980).
/// Convolution and differences are circular.
/// @param y  the blurred plane, of the side of `blur`, without unknown pixels (`estimateUnknown`)
/// @param x  receives the result; may be `y`
/// @throws Failure for a cancelled call; std::bad_alloc
void restoreChroma(const Plane& y, const BlurSpectrum& blur, const ChromaPrior& prior, Plane& x,
                   TileScratch& scratch, const Cancellation& cancellation);

} // namespace restoration
