#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <vector>

namespace velorn {

/// One weight of a kernel as a convolution applies it: a blurred pixel is the sum of `weight` times
/// the pixel that lies `right` columns to the right and `down` rows below.
struct KernelTap {
    int right;
    int down;
    float weight;
};

/// The weights of `kernel` that are not 0, row after row. Convolution mirrors the kernel: the
/// weight at its right end takes light from the left.
std::vector<KernelTap> tapsOf(const BlurKernel& kernel);

} // namespace velorn
