#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// A place in a kernel, in pixels from its middle.
struct KernelPlace {
    double right = 0.0;
    double down = 0.0;
};

/// The centre of mass of a kernel of sum above 0.
KernelPlace centreOf(const SquareKernel& kernel);

/// `kernel` moved by parts of pixels, with linear weights; what falls off is lost. Sum 1.
SquareKernel moved(const SquareKernel& kernel, const KernelPlace& by);

/// How far to move `kernel`, up to four pixels in each direction, so that it resembles
/// `reference`, of the same side, the most; to a fraction of a pixel.
KernelPlace bestMove(const SquareKernel& kernel, const SquareKernel& reference);

} // namespace restoration
