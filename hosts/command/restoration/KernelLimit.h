#pragma once

#include "hosts/command/kernels/KernelSize.h"

namespace velorn {

/// The largest side of a kernel that can restore a picture of `width` by `height` pixels. The
/// library works in square tiles whose margin grows with the kernel; beyond the limit, nothing of a
/// tile remains. The rule is documented at `ornDeblurSharpen` in velorncore10.h.
int largestKernelSide(int width, int height);

/// Checks that a kernel of this size can restore a picture of `width` by `height` pixels.
/// @throws Failure that names the size and the limit.
void checkFits(KernelSize kernel, int width, int height);

} // namespace velorn
