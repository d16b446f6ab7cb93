#pragma once

#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// The standard deviation of the noise in the luminance of `pixels`, in levels of an 8-bit picture.
///
/// Taken from the diagonal differences of 2 by 2 squares, to which noise gives much and a
/// picture's content little: the median of their absolute values over 0.6745, the share of the
/// deviation below which half of a normal distribution lies. Squares with black or white samples
/// are left out, since clipping hides their noise. A picture without any other squares has no
/// noise.
double noiseLevel(const RgbPixels& pixels);

} // namespace velorn
