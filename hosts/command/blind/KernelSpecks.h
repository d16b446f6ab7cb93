#pragma once

#include "hosts/command/kernels/BlurKernel.h"

namespace velorn {

/// `kernel` without what an estimate leaves beside the blur itself: weights far below the largest,
/// and specks apart from it that weigh little. What remains keeps its shape and sums to 1. Every
/// speck left in a kernel makes a ghost of each edge; docs/blind-estimation.md tells what their
/// removal gains.
BlurKernel withoutSpecks(const BlurKernel& kernel);

} // namespace velorn
