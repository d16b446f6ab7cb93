#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/tiles/Mask.h"

#include <vector>

namespace restoration {

/// A square part of a picture, prepared for circular convolution.
///
/// The window of the picture occupies the columns 0..window.width - 1 and the rows
/// 0..window.height - 1. The rest of the tile is the ring: at least kernel side - 1 columns and
/// rows that join opposite edges of the window smoothly, because the transforms treat opposite
/// edges of a tile as neighbours.
struct Tile {
    int side = 0;              ///< a power of two
    Rect window;               ///< in pixels of the picture; may extend beyond it
    std::vector<Plane> planes; ///< side by side; luminance alone, luminance and chroma, or channels
    Mask known;                ///< 0 in the ring, beyond the picture and at clipped pixels
    /// Whether the window holds unknown pixels. They have to be estimated; the ring alone lies far
    /// enough from the pixels that are kept.
    bool isIncomplete = false;
    bool hidesLight = false; ///< whether the window holds clipped pixels that are unknown
};

} // namespace restoration
