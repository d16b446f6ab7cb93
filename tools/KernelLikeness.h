#pragma once

#include "hosts/command/kernels/BlurKernel.h"

namespace velorn::tools {

/// How alike two kernels are, whatever their sizes: the largest sum of products of their weights
/// over all whole-pixel shifts, over the product of their roots of summed squares. 1 for kernels
/// that are equal but for a shift and a factor; a turn by 180 degrees counts as a difference.
double likeness(const BlurKernel& first, const BlurKernel& second);

/// The larger `likeness` of the two ways round that `first` can be held against `second`.
double likenessEitherWay(const BlurKernel& first, const BlurKernel& second);

} // namespace velorn::tools
