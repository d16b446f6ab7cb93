#pragma once

#include "restoration/blind/spectra/SquareTransform.h"
#include "restoration/planes/Plane.h"

#include <vector>

namespace restoration {

/// The side of the windows of `picture`: a power of two, at most 256 and at most its sides.
int windowSideOf(const Plane& picture);

/// The mean of the periodograms of windows of a picture (Welch, IEEE Trans. Audio and
/// Electroacoustics 15, 1967), which overlap by half or more and have the side of `transform`. One
/// value for each slot of the half spectrum; that of white noise is its variance.
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::vector<double> meanPeriodogram(const Plane& picture, SquareTransform& transform);

} // namespace restoration
