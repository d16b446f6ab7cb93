#pragma once

#include "restoration/kernels/Kernel.h"

#include <algorithm>
#include <span>

namespace restoration {

/// The larger side of the largest kernel; 1 without kernels.
inline int largestSide(std::span<const Kernel* const> kernels) noexcept {
    int side = 1;
    for (const Kernel* kernel : kernels) {
        side = std::max(side, kernel->largerSide());
    }
    return side;
}

} // namespace restoration
