#include "restoration/pipeline/planGrid.h"

#include "restoration/failures/Failure.h"
#include "restoration/tiles/tileMargin.h"
#include "restoration/tiles/tileSide.h"

#include <algorithm>

namespace restoration {
namespace {

constexpr int kOverlap = 24;

/// Pixels of a window beyond the frame: as far as the kernel carries light in, and as far as the
/// stages after the deconvolution look.
int beyondFrame(int kernelSide) noexcept {
    constexpr int kReachOfStages = 16;
    return std::max(kernelSide, kReachOfStages);
}

/// What a window inside a picture must keep for tiles to pay.
constexpr int kLeastUseful = 3 * kOverlap;

int windowOf(int side, int kernelSide) noexcept {
    return side - tileRing(kernelSide);
}

} // namespace

TileGrid planGrid(int width, int height, int kernelSide) {
    constexpr int kLargestSide = 1 << 30;
    if (std::max(width, height) > kLargestSide) {
        throw Failure(VELORN_STATUS_INVALID_ARGUMENT,
                      "the source has more than 2^30 columns or rows");
    }
    const int beyond = beyondFrame(kernelSide);
    const int wholeWidth = width + 2 * beyond;
    const int wholeHeight = height + 2 * beyond;
    int side = tileSideFor(kernelSide, wholeWidth, wholeHeight);
    const bool isOneTile = std::max(wholeWidth, wholeHeight) <= windowOf(side, kernelSide);
    while (!isOneTile && usefulSide(side, kernelSide) < kLeastUseful) {
        side *= 2;
    }
    return TileGrid(width, height, side,
                    {windowOf(side, kernelSide), tileMargin(kernelSide), beyond, kOverlap});
}

PatchPlan planPatches(int kernelSide, int side, int largestCount) {
    while (usefulSide(side, kernelSide) < kLeastUseful) {
        side *= 2;
    }
    return {side, {largestCount, windowOf(side, kernelSide), tileMargin(kernelSide), kernelSide}};
}

} // namespace restoration
