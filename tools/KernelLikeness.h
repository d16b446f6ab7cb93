#pragma once

#include "hosts/command/kernels/BlurKernel.h"

namespace velorn::tools {

/// Similarity of two kernels of any sizes: the largest sum of products of their weights over all
/// whole-pixel shifts, divided by the product of the square roots of their summed squares. It is 1
/// for kernels that differ only by a shift and a factor. A rotation by 180 degrees counts as a
/// difference.
double likeness(const BlurKernel& first, const BlurKernel& second);

} // namespace velorn::tools
