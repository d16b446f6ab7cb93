#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Medians of small neighbourhoods of 8-bit planes.
///
/// `src` points at the first pixel of the region, `w` by `h` pixels; the neighbours around the
/// region are read and must exist. Source and target do not overlap; steps are bytes between rows.
/// Result: `kOk`, `kNullPointer`, `kBadSize`, `kBadStep` (of `medianVertU8`, which reads no pixels
/// at the sides, also when `srcStep` is shorter than a row), `kBadMask`, and `kBadBorderStep` when
/// `srcStep` of the others is shorter than a row with its border, complained of in that order;
/// after a complaint nothing has been written. All are re-entrant and allocate nothing.
namespace vel {

/// Over 3 (`kMask31`) or 5 (`kMask51`) pixels of the row, the pixel in their middle.
Status medianHorizU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept;

/// Over 3 (`kMask13`) or 5 (`kMask15`) pixels of the column, the pixel in their middle.
Status medianVertU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                    std::int32_t dstStep, std::int32_t w, std::int32_t h,
                    std::int32_t mask) noexcept;

/// Over the pixel and its 1 (`kMask33`, five pixels) or 2 (`kMask55`, nine pixels) neighbours
/// upwards, downwards, to the left and to the right.
Status medianCrossU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept;

} // namespace vel
