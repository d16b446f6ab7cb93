#pragma once

#include "restoration/blind/search/FindSettings.h"
#include "restoration/blind/squares/KernelBounds.h"
#include "restoration/planes/Plane.h"

namespace restoration {

/// The side of the largest kernels that runs look for.
inline constexpr int kLargestRunSide = 71;

/// The sides that a kernel found in `luminance` may have: those wanted, at most a third of the
/// picture's shorter side; where none are wanted, a fifth of it. A kernel to refine has room to
/// move and to grow.
/// @throws Failure VELORN_STATUS_NO_KERNEL for pictures with less than 32 columns or rows;
///         VELORN_STATUS_KERNEL_TOO_LARGE for a kernel to refine
KernelBounds searchBounds(const Plane& luminance, const FindSettings& settings);

/// The side of a run for a kernel that is about `extent` pixels wide; odd.
int fittingSide(int extent) noexcept;

} // namespace restoration
