#pragma once

#include "restoration/tiles/samplePatches.h"
#include "restoration/tiles/TileGrid.h"

namespace restoration {

/// The tiles of a picture for kernels whose larger side is `kernelSide` (at least 1).
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for sides above 2^30 pixels
TileGrid planGrid(int width, int height, int kernelSide);

/// Rules for patches that are tiles of `side` pixels, the smallest that suits `kernelSide` where
/// `side` is smaller.
struct PatchPlan {
    int side = 0;
    PatchRules rules;
};
PatchPlan planPatches(int kernelSide, int side, int largestCount);

} // namespace restoration
