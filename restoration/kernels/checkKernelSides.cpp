#include "restoration/kernels/checkKernelSides.h"

#include "restoration/failures/Failure.h"

#include <algorithm>
#include <string>

namespace restoration {

void throwKernelTooLarge() {
    throw Failure(VELORN_STATUS_KERNEL_TOO_LARGE, "a side of the kernel is longer than " +
                                                      std::to_string(VELORN_LARGEST_KERNEL_SIDE) +
                                                      " pixels");
}

void checkKernelSides(int width, int height) {
    if (std::max(width, height) > VELORN_LARGEST_KERNEL_SIDE) {
        throwKernelTooLarge();
    }
    if (width < 1 || height < 1 || width % 2 == 0 || height % 2 == 0) {
        throw Failure(VELORN_STATUS_INVALID_ARGUMENT,
                      "the kernel is " + std::to_string(width) + " by " + std::to_string(height) +
                          ", but both sides must be odd and at least 1");
    }
}

} // namespace restoration
