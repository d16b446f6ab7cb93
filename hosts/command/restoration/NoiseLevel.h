#pragma once

#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// The standard deviation of the noise in the luminance of `pixels`, in levels of an 8-bit picture.
///
/// Measured in squares of 2 by 2 pixels: the diagonal difference of a square contains much of the
/// noise and little of the picture's content. The result is the median of the absolute differences,
/// divided by 0.6745, the median of the absolute value of a standard normal variable. Squares with
/// black or white samples are ignored, because clipping hides their noise. A picture without other
/// squares has the noise 0.
double noiseLevel(const RgbPixels& pixels);

} // namespace velorn
