#include "restoration/tiles/tileSide.h"

#include "restoration/tiles/tileMargin.h"

#include <array>
#include <cstddef>

namespace restoration {
namespace {

/// Time that taper and deconvolution take for a pixel, in units of that for the smallest tile, by
/// the binary logarithm of the side above the smallest one. Measured on one thread; larger tiles
/// leave the caches.
constexpr std::array<double, 6> kCostOfPixel = {1.0, 1.04, 1.15, 1.56, 2.0, 2.03};

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
