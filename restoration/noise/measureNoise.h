#pragma once

#include "restoration/noise/ColourRows.h"
#include "restoration/noise/NoiseLevels.h"

namespace restoration {

/// Measures the noise of a picture.
///
/// Measured in squares of 2 by 2 pixels: the diagonal difference of a square contains much of the
/// noise and little of the picture's content. The result is the standard deviation of a normal
/// variable whose absolute value has the median of the differences. Squares with samples of exactly
/// black or white are ignored, because clipping hides their noise. Edges and texture raise the
/// result; a blurred picture has little of either.
///
/// JPEG compression removes most of the noise within its blocks of 8 by 8 pixels and adds errors of
/// lower frequencies. The four pixels around a corner of the blocks have independent errors. If the
/// squares at one of the 64 places of a grid of 8 pixels differ clearly more than the others, the
/// picture was compressed, and those squares are measured alone. Their result is the whole error of
/// the picture, compression included.
///
/// Samples are rounded to steps, therefore the results are at least the standard deviation of that
/// rounding: 0.29 levels for a channel of 8 bits, 0.19 for the luminance of three, 0 for floats. A
/// picture without squares to measure has these results.
///
/// Reads bands of rows of large pictures, about a million squares. Depends on the picture only.
/// @throws std::bad_alloc
NoiseLevels measureNoise(const ColourRows& picture);

} // namespace restoration
