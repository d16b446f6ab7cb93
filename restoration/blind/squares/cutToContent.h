#pragma once

#include "restoration/blind/squares/KernelBounds.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/kernels/Kernel.h"

namespace restoration {

/// The centred rectangle that holds all weights above 0, and a pixel more on each side where
/// `bounds` and the square leave room.
Kernel cutToContent(const SquareKernel& square, const KernelBounds& bounds);

} // namespace restoration
