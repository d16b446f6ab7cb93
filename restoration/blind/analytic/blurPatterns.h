#pragma once

#include "restoration/blind/analytic/Ripple.h"

#include <cstddef>

namespace restoration {

/// The power spectrum of a disc of `radius` pixels at `length` steps of 1 / `side` from 0.
BlurPattern discPattern(double radius, std::size_t length, int side);

/// The power spectrum of a straight stroke of `stroke` pixels, along the stroke.
BlurPattern strokePattern(double stroke, std::size_t length, int side);

} // namespace restoration
