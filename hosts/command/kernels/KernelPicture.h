#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <string>

namespace velorn {

/// `kernel` as lines of block characters (UTF-8) for a terminal. Each weight takes two characters,
/// which together are about square; the shade shows the weight relative to the largest one. Kernels
/// with more than 31 columns or rows are reduced: each place shows the sum of several weights.
std::string kernelPicture(const BlurKernel& kernel);

} // namespace velorn
