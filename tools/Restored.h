#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

namespace velorn::tools {

/// `pixels` (8 bits) restored with the automatic settings of the restoration library on one thread.
/// @param isFound whether the kernel was found in the picture and may be wrong
RgbPixels restoredWith(const RgbPixels& pixels, const BlurKernel& kernel, bool isFound);

} // namespace velorn::tools
