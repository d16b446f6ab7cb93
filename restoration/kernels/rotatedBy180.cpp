#include "restoration/kernels/rotatedBy180.h"

#include <algorithm>

namespace restoration {

Kernel rotatedBy180(Kernel kernel) {
    std::ranges::reverse(kernel.values);
    return kernel;
}

} // namespace restoration
