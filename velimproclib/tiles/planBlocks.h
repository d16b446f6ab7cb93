#pragma once

#include <cstdint>

namespace vel {

/// How one axis of an image is cut into tiles. All lengths in pixels.
struct TileGeometry {
    /// Tiles planned along the axis. Serves progress sums only: the walk decides by position when
    /// to stop, and may visit one tile more.
    std::int32_t count;
    std::int32_t length; ///< useful length of a tile, its margin not included
    std::int32_t step;   ///< distance between the starts of neighbouring tiles

    bool operator==(const TileGeometry&) const = default;
};

/// Plans one axis: how long a tile's useful part is, how far apart tiles stand, how many there are.
///
/// The tiles of a plan start at 0 and every `step` pixels; the last one is pulled back so that it
/// ends where the image ends.
///
/// @param mode       0: the plain layout, tiles of exactly `tileLength`. Otherwise the aligned
///                   layout: lengths are multiples of 16, and one or two longer tiles are preferred
///                   where they cover the axis.
/// @param total      length of the image along the axis
/// @param tileLength wanted useful length: the tile's side without its two margins
/// @param overlap    wanted overlap of neighbouring tiles
///
/// Pure arithmetic, never fails, defined for every input. Where no tile can advance (a
/// `tileLength` of 0 or less, or one at or below `overlap`, with a longer axis) the plan says so by
/// a `step` below 1 or a `count` of 2 without meaning; the walk refuses it.
TileGeometry planBlocks(std::uint8_t mode, std::int32_t total, std::int32_t tileLength,
                        std::int32_t overlap) noexcept;

} // namespace vel
