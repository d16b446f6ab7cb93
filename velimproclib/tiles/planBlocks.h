#pragma once

#include <cstdint>

/// Where the length of tiles is decided: the plan of one axis of an image.
namespace vel {

/// How one axis of an image is cut into tiles. All lengths in pixels.
struct TileGeometry {
    /// Tiles planned along the axis, for progress sums only: the walk stops by position, and may
    /// visit one tile more.
    std::int32_t count;
    std::int32_t length; ///< useful length of a tile, without its margins
    std::int32_t step;   ///< distance between the starts of neighbouring tiles

    bool operator==(const TileGeometry&) const = default;
};

/// Plans one axis: the useful length of its tiles, their distance and their number.
///
/// Tiles start at 0 and every `step` pixels; the last one is pulled back so that it ends where the
/// image ends.
///
/// @param mode       0: the plain layout, tiles of exactly `tileLength`. Otherwise the aligned
///                   layout: lengths are multiples of 16, and one or two longer tiles are preferred
///                   where they cover the axis. No export selects it.
/// @param total      length of the image along the axis
/// @param tileLength wanted useful length: the side of the tile without its two margins
/// @param overlap    wanted overlap of neighbouring tiles
///
/// Pure arithmetic, never fails, defined for every input. Where no tile can advance (a
/// `tileLength` of 0 or less, or one at or below `overlap`, with a longer axis) the plan has a
/// `step` below 1 or a meaningless `count` of 2; the walk reports it.
TileGeometry planBlocks(std::uint8_t mode, std::int32_t total, std::int32_t tileLength,
                        std::int32_t overlap) noexcept;

/// Rounds a length to a multiple of 16.
using Round16 = std::int64_t (*)(std::int64_t);

/// The aligned layout of `planBlocks`: one long tile, two, or many, in lengths rounded by
/// `round16`. `keep` is the share of a tile that its neighbours do not overlap, 1 - overlap /
/// length. Defined for every input, like `planBlocks`.
TileGeometry planAlignedTiles(std::int64_t total, std::int64_t tileLength, double keep,
                              Round16 round16) noexcept;

} // namespace vel
