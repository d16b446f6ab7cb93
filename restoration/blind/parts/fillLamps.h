#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <cstddef>

namespace restoration {

/// Replaces blown lamps by what surrounds them.
///
/// Light above white is clipped after the blur: the image of a lamp ends abruptly, where a blurred
/// edge would not. No kernel explains such edges, and they look like those of a sharp picture.
///
/// A lamp is a connected area of at least 3 white pixels (254.5 of 255) with at most 96 columns and
/// rows. What lies 4 pixels beyond it is darker than 0.75 on the mean; the surroundings of white
/// areas that are blurred as a whole are brighter. The lamp and 3 pixels around it become smooth:
/// 60 sweeps of Gauss and Seidel for the equation of Laplace.
///
/// @param picture  luminance, finite, white = 1; unchanged if it has values above 255.5 of 255,
///                 since such a picture keeps light above white
/// @returns the number of pixels replaced
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::size_t fillLamps(Plane& picture, const Cancellation& cancellation);

} // namespace restoration
