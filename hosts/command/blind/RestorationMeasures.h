#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// The mean square root of the differences between neighbouring pixels of the luminance, in levels
/// of 255. A band along the frame is ignored. Many small differences count for more than few large
/// ones.
///
/// It compares restorations of one picture with two orientations of a kernel, which remove the same
/// frequencies: the right one concentrates the picture's contrast in edges, the wrong one spreads
/// it in ripples beside them.
double roughness(const RgbPixels& pixels);

/// How badly a restoration explains its source. `restored` is blurred again with `kernel`; the mean
/// squared difference from `blurred` is divided by a weighted geometric mean of two reference
/// values: the mean squared difference between neighbouring pixels of `blurred`, and the variance
/// of its noise. A band along the frame is ignored. The pictures have the same size and depth.
///
/// With the right kernel, little more than noise remains unexplained. The weights of the reference
/// values are those that best separated harmful restorations from useful ones; see
/// docs/blind-estimation.md.
double misfit(const RgbPixels& blurred, const RgbPixels& restored, const BlurKernel& kernel);

} // namespace velorn
