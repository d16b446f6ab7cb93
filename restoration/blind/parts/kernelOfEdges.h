#pragma once

#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The Gaussian that takes from ideal edges what the edges of a picture have lost, less the little
/// that sharp pictures lack. Its variance may differ between directions: it fits the variances of
/// all directions best in the mean square. 9 by 9 pixels, sum 1; the kernel of a point where
/// nothing is lost.
///
/// A kernel for small blurs: it cannot be wider than the edges, but has no other shape.
SquareKernel kernelOfEdges(const EdgeSpectrum& edges);

} // namespace restoration
