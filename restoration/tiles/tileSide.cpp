#include "restoration/tiles/tileSide.h"

#include "restoration/tiles/tileMargin.h"

#include <array>
#include <cstddef>

namespace restoration {
namespace {

/// The cost of a pixel by the binary logarithm of the side above the smallest one: the time that
/// taper and deconvolution take on one thread, in units of that for the smallest tile, because
/// larger tiles leave the caches. From 2048 on the times are 2.0; these sides count more, because
/// few large tiles keep few threads busy, take much memory, and make a small region of a picture
/// expensive.
constexpr std::array<double, 6> kCostOfPixel = {1.0, 1.04, 1.15, 1.56, 3.0, 5.0};

/// Tiles along an axis of `length` pixels; 0 when the tile is too small for the kernel.
int tilesAlong(int length, int side, int kernelSide) {
    if (length <= side - tileRing(kernelSide)) {
        return 1;
    }
    const int useful = usefulSide(side, kernelSide);
    return useful < 1 ? 0 : (length - 1) / useful + 1;
}

} // namespace

int tileSideFor(int kernelSide, int width, int height) noexcept {
    int best = kLargestTileSide;
    double leastCost = 0;
    for (std::size_t i = 0; i < kCostOfPixel.size(); ++i) {
        const int side = kSmallestTileSide << i;
        const double tiles = static_cast<double>(tilesAlong(width, side, kernelSide)) *
                             tilesAlong(height, side, kernelSide);
        const double cost = tiles * side * side * kCostOfPixel[i];
        if (cost > 0 && (leastCost == 0 || cost < leastCost)) {
            best = side;
            leastCost = cost;
        }
    }
    return best;
}

} // namespace restoration
