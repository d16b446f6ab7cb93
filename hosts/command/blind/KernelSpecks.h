#pragma once

#include "hosts/command/kernels/BlurKernel.h"

namespace velorn {

/// `kernel` without the noise of an estimate: removes weights far below the largest one, and light
/// patches that are not connected to the blur. The remaining weights keep their proportions and sum
/// to 1. Every speck that stays in a kernel makes a ghost of each edge. docs/blind-estimation.md
/// shows the gain.
BlurKernel withoutSpecks(const BlurKernel& kernel);

} // namespace velorn
