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

/// What a window inside a picture must keep for its tiles to overlap in pairs only.
constexpr int kLeastUseful = 3 * kOverlap;

/// Whether tiles are large enough for what the kernel does. Tiles that keep less than thirteen
/// kernels show themselves at high strengths: motion of 15 pixels or a disc of radius 8 at strength
/// 40000 differ from the restoration in one piece by 4 to 5 levels in tiles of 256, by less than 1
/// in tiles of 512. Beyond a side of 2048 memory is dearer than that.
bool isLargeEnough(int side, int kernelSide) noexcept {
    constexpr int kLeastKernels = 13;
    constexpr int kLargestForQuality = 2048;
    const int useful = usefulSide(side, kernelSide);
    return useful >= kLeastUseful &&
           (side >= kLargestForQuality || useful >= kLeastKernels * kernelSide);
}

/// Tiles of 4096 take four times the memory of those of 2048, and pictures have few of them to
/// share among threads. Only the largest kernels need them.
int boundedSide(int side, int kernelSide) noexcept {
    constexpr int kBound = 2048;
    return usefulSide(kBound, kernelSide) >= 4 * kernelSide ? std::min(side, kBound) : side;
}

int windowOf(int side, int kernelSide) noexcept {
    return side - tileRing(kernelSide);
}

void requirePossibleSides(int width, int height) {
    constexpr int kLargestSide = 1 << 30;
    if (std::max(width, height) > kLargestSide) {
        throw Failure(VELORN_STATUS_INVALID_ARGUMENT,
                      "the source has more than 2^30 columns or rows");
    }
}

} // namespace

TileGrid planGrid(int width, int height, int kernelSide) {
    requirePossibleSides(width, height);
    const int beyond = beyondFrame(kernelSide);
    const int wholeWidth = width + 2 * beyond;
    const int wholeHeight = height + 2 * beyond;
    int side = boundedSide(tileSideFor(kernelSide, wholeWidth, wholeHeight), kernelSide);
    const auto isOneTile = [&](int tileSide) {
        return std::max(wholeWidth, wholeHeight) <= windowOf(tileSide, kernelSide);
    };
    while (!isOneTile(side) && !isLargeEnough(side, kernelSide)) {
        side *= 2;
    }
    return TileGrid(width, height, side,
                    {windowOf(side, kernelSide), tileMargin(kernelSide), beyond, kOverlap});
}

TileGrid planLocalGrid(int width, int height, int kernelSide, int cell) {
    requirePossibleSides(width, height);
    constexpr int kLeastStep = 96;
    constexpr int kMostStep = 320;
    const int step = std::clamp(cell / 2, kLeastStep, kMostStep);
    const int overlap = step / 4 * 2;
    const int margin = tileMargin(kernelSide);
    int side = kSmallestTileSide;
    while (usefulSide(side, kernelSide) < step + overlap) {
        side *= 2;
    }
    // Tiles that keep more than the step would have a kernel that does not fit their ends.
    const int window = std::min(windowOf(side, kernelSide), step + overlap + 2 * margin);
    return TileGrid(width, height, side, {window, margin, beyondFrame(kernelSide), overlap});
}

PatchPlan planPatches(int kernelSide, int side, int largestCount) {
    while (usefulSide(side, kernelSide) < kLeastUseful) {
        side *= 2;
    }
    return {side, {largestCount, windowOf(side, kernelSide), tileMargin(kernelSide), kernelSide}};
}

} // namespace restoration
