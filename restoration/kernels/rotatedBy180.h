#pragma once

#include "restoration/kernels/Kernel.h"

namespace restoration {

/// The kernel rotated by 180 degrees.
Kernel rotatedBy180(Kernel kernel);

} // namespace restoration
