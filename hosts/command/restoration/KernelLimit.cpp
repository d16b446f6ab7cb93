#include "hosts/command/restoration/KernelLimit.h"

#include "hosts/command/terminal/Failure.h"

#include <algorithm>

namespace velorn {
namespace {

/// The rule of velimproclib/tiles/tileSide.h, which hosts cannot include.
int tileSide(int width, int height) {
    const int side = std::max(width, height);
    if (side <= 256) {
        return 256;
    }
    return side > 512 && side <= 1024 ? 1024 : 512;
}

} // namespace

int largestKernelSide(int width, int height) {
    const int bound = (tileSide(width, height) - 48) / 4;
    // The side must be odd and below the bound.
    return bound % 2 == 0 ? bound - 1 : bound - 2;
}

void checkFits(KernelSize kernel, int width, int height) {
    const int largest = largestKernelSide(width, height);
    if (kernel.largerSide() > largest) {
        throw Failure("a kernel of " + kernel.text() +
                      " is too large for this picture; the limit is " +
                      KernelSize{largest, largest}.text());
    }
}

} // namespace velorn
