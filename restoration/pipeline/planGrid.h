#pragma once

#include "restoration/tiles/samplePatches.h"
#include "restoration/tiles/TileGrid.h"

namespace restoration {

/// The tiles of a picture for kernels whose larger side is `kernelSide` (at least 1).
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for sides above 2^30 pixels
TileGrid planGrid(int width, int height, int kernelSide);

/// The tiles of a picture whose blur differs from place to place. The kernel of a tile fits its
/// middle, so tiles are small against the cells of the grid of kernels, and fade into each other
/// over a third of their kept parts: the filter flow of M. Hirsch, S. Sra, B. Schoelkopf,
/// S. Harmeling, Efficient filter flow for space-variant multiframe blind deconvolution, CVPR 2010.
/// @param cell  pixels from the middle of a cell to that of the next, the smaller of both axes
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for sides above 2^30 pixels
TileGrid planLocalGrid(int width, int height, int kernelSide, int cell);

/// Rules for patches that are tiles of `side` pixels, the smallest that suits `kernelSide` where
/// `side` is smaller.
struct PatchPlan {
    int side = 0;
    PatchRules rules;
};
PatchPlan planPatches(int kernelSide, int side, int largestCount);

} // namespace restoration
