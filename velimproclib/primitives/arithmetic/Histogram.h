#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

namespace vel {

/// Histogram of an 8-bit region over even intervals.
///
/// Fills `levels[0..n-1]` from `lower` to `upper`: neighbouring levels are
/// `(upper - lower)/(n - 1)` apart, and what that division leaves over goes to the first intervals,
/// one unit each. Then `hist[k]`, k = 0 .. n-2, becomes the number of pixels with
/// `levels[k] <= pixel < levels[k+1]`; pixels outside all intervals are not counted, and a count
/// stops at the largest int32. With `upper` below `lower` the levels fall and nothing is counted.
///
/// `src` points at the first pixel of the region, `w` by `h` pixels; `step` is bytes between rows.
/// Result: `kOk`, `kNullPointer`, `kBadSize`, `kBadStep`, and `kTooFewHistogramLevels` for `n`
/// below 2, complained of in that order; after a complaint nothing has been written. Re-entrant,
/// allocates nothing.
Status histogramEvenU8(const std::uint8_t* src, std::int32_t step, std::int32_t w, std::int32_t h,
                       std::int32_t* hist, std::int32_t* levels, std::int32_t n, std::int32_t lower,
                       std::int32_t upper) noexcept;

} // namespace vel
