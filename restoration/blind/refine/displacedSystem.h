#pragma once

#include "restoration/blind/runs/KernelSystem.h"

namespace restoration {

/// A move by parts of a pixel, at most 1 in each direction.
struct Displacement {
    double right = 0.0;
    double down = 0.0;
};

/// By how much the radius of a system exceeds that of the one derived from it.
inline constexpr int kDisplacementReach = 8;

/// The system for gradients that are smoothed by a Gaussian of `sigma` pixels (0: not) and moved by
/// the opposite of `move`: it is minimised by the kernel of `system` narrowed and moved by `move`.
///
/// Correlations between whole lags are interpolated by the band-limited Gaussian under a Lanczos
/// window. The radius is that of `system` less `kDisplacementReach`.
/// @throws std::bad_alloc
KernelSystem displacedSystem(const KernelSystem& system, const Displacement& move, double sigma);

} // namespace restoration
