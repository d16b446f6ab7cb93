#pragma once

#include "RgbPixels.h"

namespace velorn {

/// How far a picture is from the look of a sharp one, told from the picture alone: the mean step
/// between neighbouring pixels of its luminance over the root of the mean squared step. The lower,
/// the better.
///
/// A sharp picture has few strong steps among calm areas. Blur spreads each step over many pixels,
/// noise and ringing fill the calm areas with small ones: all of them raise the quotient. It knows
/// no scale, so that contrast neither helps nor harms. An outer band, where a restoration has to
/// guess, is left out. A picture without any step has 1, the worst.
double unsharpness(const RgbPixels& pixels);

/// How much goes on in a picture: the mean square root of the step between neighbouring pixels of
/// its luminance, in levels of 255, an outer band left out. Many small steps count for more than
/// few strong ones.
///
/// It compares restorations of one picture with kernels that differ only in the way round, and so
/// take the same frequencies away: the one that fits puts the strength of the picture into its
/// edges, the other spreads it in ripples beside them.
double roughness(const RgbPixels& pixels);

} // namespace velorn
