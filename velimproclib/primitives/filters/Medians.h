#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Medians of small neighbourhoods of 8-bit planes.
///
/// `src` points at the first pixel of the region, `w` by `h` pixels; the neighbours around the
/// region are read and must exist. Source and target do not overlap; steps are bytes between rows.
///
/// All return `kOk`, `kNullPointer`, `kBadSize`, `kBadStep`, `kBadMask` or `kBadBorderStep`,
/// checked in this order, and write nothing when a check fails. `kBadBorderStep` means that
/// `srcStep` is shorter than a row with its border. `medianVertU8` reads no pixels at the sides; it
/// returns `kBadStep` when `srcStep` is shorter than a row. Re-entrant, allocate nothing.
namespace vel {

/// The median of 3 (`kMask31`) or 5 (`kMask51`) pixels of the row, centred on the pixel.
Status medianHorizU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept;

/// The median of 3 (`kMask13`) or 5 (`kMask15`) pixels of the column, centred on the pixel.
Status medianVertU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                    std::int32_t dstStep, std::int32_t w, std::int32_t h,
                    std::int32_t mask) noexcept;

/// The median of the pixel and its 1 (`kMask33`, five pixels) or 2 (`kMask55`, nine pixels)
/// neighbours above, below, to the left and to the right.
Status medianCrossU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                     std::int32_t dstStep, std::int32_t w, std::int32_t h,
                     std::int32_t mask) noexcept;

} // namespace vel
