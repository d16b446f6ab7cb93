#pragma once

#include <vector>

namespace restoration {

/// Along one axis: the pixels that a tile loads and those that it contributes to the result.
struct AxisTile {
    int windowBegin = 0; ///< may lie before the picture
    int windowEnd = 0;   ///< after the last pixel; may lie beyond the picture
    int keptBegin = 0;
    int keptEnd = 0;
    int fadeBefore = 0; ///< kept pixels that are also kept by the tile before
    int fadeAfter = 0;  ///< kept pixels that are also kept by the tile after
};

/// What the tiles of an axis have in common.
struct AxisRules {
    int window = 0;  ///< largest window; at least 2 margin + 3 overlap
    int margin = 0;  ///< pixels between the kept part and the end of the window inside the picture
    int beyond = 0;  ///< pixels of the first and last window beyond the picture; at most `margin`
    int overlap = 0; ///< pixels that two neighbouring tiles cross-fade; even
};

/// Cuts an axis of `length` (at least 1) pixels into as few tiles as possible. All windows of
/// several tiles have the largest size and are spread evenly; one tile has the window that it
/// needs. No pixel is kept by more than two tiles.
std::vector<AxisTile> planAxis(int length, const AxisRules& rules);

/// The weight of pixel `position` in the kept part of `tile`: 1 outside the cross-faded pixels. The
/// weights of all tiles of a pixel sum to 1 up to rounding.
float axisWeight(const AxisTile& tile, int position) noexcept;

} // namespace restoration
