#pragma once

#include "restoration/planes/Plane.h"

namespace restoration {

/// The standard deviation of the noise in levels of 255, from the median of the diagonal details;
/// at least 0.2, which is less than rounding to 8 bits adds.
/// @throws std::bad_alloc
double diagonalNoise(const Plane& plane);

} // namespace restoration
