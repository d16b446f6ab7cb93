#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// Makes the seam of a complete tile look like blurred content: the ring, and the window up to half
/// a kernel from its ends, fade into the circular blur of the plane. Otherwise deconvolution takes
/// the join of the edges for detail of the scene that no blur can produce, and rings across the
/// window.
///
/// At the usual strengths this removes most of the ringing of motion blur at the cost of one
/// transform and its inverse; estimating the ring takes eight and is not better for long motion.
/// @param y  of the side of `blur`; its ring joins the edges of the window (`joinEdges`)
/// @param width, height  of the window at the top left
/// @throws Failure for a cancelled call; std::bad_alloc
void taperEdges(Plane& y, int width, int height, const BlurSpectrum& blur, TileScratch& scratch,
                const Cancellation& cancellation);

} // namespace restoration
