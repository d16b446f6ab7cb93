#pragma once

#include "restoration/tiles/TileLoader.h"

#include <vector>

namespace restoration {

/// A tile that stands for the whole picture in measurements and global choices.
struct Patch {
    Tile tile;
    /// The pixels to look at, in the picture: known, and away from the ends of the window where
    /// the picture goes on.
    Rect kept;
};

/// Which patches to take.
struct PatchRules {
    int largestCount = 9; ///< at least 1
    int window = 0;       ///< largest window: the side of the tiles without the ring
    int margin = 0;       ///< of a window inside the picture; less than half of `window`
    int beyond = 0;       ///< pixels beyond the frame where a window holds a whole axis
};

/// A sample of windows over a picture, for everything that is chosen once per picture: strength,
/// light, clipping. The picture is divided into a grid of equal cells, as many as it needs and at
/// most `largestCount`; the patches are centred in them. A window holds a whole axis, continued
/// beyond the frame, where the axis is short enough; otherwise it lies inside the picture.
///
/// Depends on the picture, the loader and the rules only. At least one patch.
/// @throws std::bad_alloc
std::vector<Patch> samplePatches(const TileLoader& loader, const PatchRules& rules);

} // namespace restoration
