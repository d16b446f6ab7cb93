#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// How much goes on in a picture: the mean square root of the step between neighbouring pixels of
/// its luminance, in levels of 255, an outer band left out. Many small steps count for more than
/// few strong ones.
///
/// It compares restorations of one picture with kernels that differ only in the way round, and so
/// take the same frequencies away: the one that fits puts the strength of the picture into its
/// edges, the other spreads it in ripples beside them.
double roughness(const RgbPixels& pixels);

/// How badly a restoration explains the picture that it was made from: `restored` is blurred again
/// by `kernel`, and the mean squared difference from `taken` is held against what the picture has
/// of its own, the mean squared step between its neighbouring pixels, and against its noise. An
/// outer band is left out; the pictures are of one size and depth.
///
/// A kernel that fits leaves little but noise unexplained. The two yardsticks count with the
/// weights that told useful restorations from harmful ones best; see docs/blind-estimation.md.
double doubtfulness(const RgbPixels& taken, const RgbPixels& restored, const BlurKernel& kernel);

} // namespace velorn
