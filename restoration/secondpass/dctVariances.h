#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/secondpass/DctVariances.h"

namespace restoration {

/// The variances of the 8x8 coefficients of a stationary random plane.
/// @param autocovariance  circular, lag (0, 0) in the first pixel; at least 16x16
DctVariances dctVariances(const Plane& autocovariance);

} // namespace restoration
