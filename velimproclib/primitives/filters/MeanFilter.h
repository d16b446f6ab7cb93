#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

namespace vel {

/// Mean over a square neighbourhood of an 8-bit plane, in integers: `((sum + 5)*455) >> 12` over 3
/// by 3 pixels (`kMask33`), `((sum + 13)*10485) >> 18` over 5 by 5 (`kMask55`). Both give the mean
/// rounded to nearest for every possible sum.
///
/// `src` points at the first pixel of the region, `w` by `h` pixels; one or two pixels around the
/// region are read and must exist. Source and target do not overlap; steps are bytes between rows.
/// Returns `kOk`, `kNullPointer`, `kBadSize`, `kBadStep`, `kBadMask`, or `kBadBorderStep` when
/// `srcStep` is shorter than a row with its border, checked in this order; writes nothing when a
/// check fails. Re-entrant, allocates nothing.
Status meanFilterU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                    std::int32_t dstStep, std::int32_t w, std::int32_t h,
                    std::int32_t mask) noexcept;

} // namespace vel
