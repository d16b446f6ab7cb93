#include "hosts/command/restoration/TileLimit.h"

#include <algorithm>

namespace velorn {
namespace {

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
    // The side stays below the bound and is odd.
    return bound % 2 == 0 ? bound - 1 : bound - 2;
}

} // namespace velorn
