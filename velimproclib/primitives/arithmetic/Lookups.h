#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Piecewise lookups of float planes through `n` knots (levels[i], values[i]).
///
/// A pixel v belongs to the first interval k with levels[k] <= v < levels[k + 1]. Pixels outside
/// all intervals keep their value, bit for bit: those below levels[0], at or above levels[n - 1],
/// and NaN. Levels normally rise. Equal neighbours form an empty interval. Levels in any other
/// order follow the same rule, but slowly.
///
/// Coefficients and evaluation are in double, with one rounding to float at the end. Therefore the
/// results are the same on every processor. Nothing is allocated for any `n`; up to 32 rising
/// levels are fast.
///
/// Both return `kOk`, `kNullPointer`, `kBadSize`, `kBadStep`, or `kTooFewLutLevels` for `n` below
/// 2, checked in this order, and write nothing when a check fails. Re-entrant.
namespace vel {

/// dst = (v - levels[k]) slope[k] + values[k], the line through knots k and k + 1. Pixels outside
/// all intervals are copied. `src` and `dst` are the same plane or do not overlap.
Status lutLinearF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h, const float* values, const float* levels,
                    std::int32_t n) noexcept;

/// The cubic through the four knots j .. j + 3 with j = min(max(k - 1, 0), n - 4): the first and
/// the last interval share the polynomial of their neighbour. With fewer than four levels this is
/// `lutLinearF32`. Where two of the four levels are equal, their divided difference counts as 0.
Status lutCubicInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                          const float* values, const float* levels, std::int32_t n) noexcept;

} // namespace vel
