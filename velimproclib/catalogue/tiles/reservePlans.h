#pragma once

#include "velimproclib/tiles/planBlocks.h"

#include <cstdint>

/// Layouts of one axis other than `planBlocks`. Pure arithmetic, defined for every input; lengths
/// are in pixels.
namespace vel {

/// The aligned layout of `planBlocks` with the overlap given as a share of the tile, `fraction`
/// (0.05 = one twentieth). A length that is a multiple of 16 stays unchanged.
TileGeometry reserveTilePlan(std::int32_t total, std::int32_t tileLength, float fraction) noexcept;

/// One tile, two halves, or many tiles of even length. `length` of the result includes `overlap`,
/// except for the single tile, which is as long as the axis.
TileGeometry reserveEvenTilePlan(std::int32_t total, std::int32_t tileLength,
                                 std::int32_t overlap) noexcept;

} // namespace vel
