#pragma once

#include "velimproclib/tiles/planBlocks.h"

#include <cstdint>

/// The arithmetic that the planners share. Intermediate values are 64 bits wide, so that any
/// 32-bit input is safe; only results are narrowed.
namespace vel {

/// How a length becomes a multiple of 16.
using Round16 = std::int64_t (*)(std::int64_t);

/// Equal tiles of `tileLength`, as few as leave about a share 1 - `keep` of each to its
/// neighbour, spread over the axis.
TileGeometry planEqualTiles(std::int64_t total, std::int64_t tileLength, double keep) noexcept;

/// One long tile, two, or many, in lengths rounded by `round16`.
TileGeometry planAlignedTiles(std::int64_t total, std::int64_t tileLength, double keep,
                              Round16 round16) noexcept;

} // namespace vel
