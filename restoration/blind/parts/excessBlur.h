#pragma once

#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// How much more power a kernel takes from edges than a picture's edges have lost: the mean over
/// the bands in which edges are visible, in the direction in which it is largest, in powers of e.
///
/// Near 0 for the kernel that blurred the picture. Well above 0, the kernel is wider than the blur:
/// the restoration with it would have more power at high frequencies than ideal edges. Kernels
/// whose size is that of the blurs of shaken cameras leave accidental power, and lose little there.
/// Without visible bands 0.
double excessBlur(const EdgeSpectrum& edges, const SquareKernel& kernel);

} // namespace restoration
