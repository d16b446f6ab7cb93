#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <string>

namespace velorn {

/// `kernel` as lines of block characters (UTF-8) for a terminal: two characters a weight, so that
/// squares look square, the shade by the weight's share of the largest one. Kernels of more than
/// 31 columns or rows are shown smaller, several weights to a place.
std::string kernelPicture(const BlurKernel& kernel);

} // namespace velorn
