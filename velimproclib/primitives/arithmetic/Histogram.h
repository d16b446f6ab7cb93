#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

namespace vel {

/// Histogram of an 8-bit region over even intervals.
///
/// Fills `levels[0..n-1]` from `lower` to `upper`: neighbouring levels differ by
/// `(upper - lower)/(n - 1)`, and the remainder of that division goes to the first intervals, one
/// unit each. Then sets `hist[k]`, k = 0 .. n-2, to the number of pixels with
/// `levels[k] <= pixel < levels[k+1]`. Pixels outside all intervals are not counted, and a count
/// saturates at the largest int32. With `upper` below `lower` the levels fall and all counts are 0.
///
/// `src` points at the first pixel of the region, `w` by `h` pixels; `step` is bytes between rows.
/// Returns `kOk`, `kNullPointer`, `kBadSize`, `kBadStep`, or `kTooFewHistogramLevels` for `n` below
/// 2, checked in this order; writes nothing when a check fails. Re-entrant, allocates nothing.
Status histogramEvenU8(const std::uint8_t* src, std::int32_t step, std::int32_t w, std::int32_t h,
                       std::int32_t* hist, std::int32_t* levels, std::int32_t n, std::int32_t lower,
                       std::int32_t upper) noexcept;

} // namespace vel
