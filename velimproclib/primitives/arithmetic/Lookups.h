#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Piecewise lookups of float planes through `n` knots (levels[i], values[i]).
///
/// A pixel v belongs to the first interval k with levels[k] <= v < levels[k + 1]. Pixels of no
/// interval keep their value, bit for bit: those below levels[0], at levels[n - 1] and above, and
/// NaN. The levels are meant to rise; equal neighbours make an interval that no pixel belongs to,
/// and levels in any order obey the rule above, slowly.
///
/// Coefficients and evaluation are in double, with one rounding to float at the end, so the results
/// are the same on every processor. Nothing is allocated for any `n`; up to 32 rising levels are
/// fast.
///
/// Both return `kNullPointer`, `kBadSize`, `kBadStep` or, for `n` below 2, `kTooFewLutLevels`,
/// looked for in this order, and then have written nothing.
namespace vel {

/// dst = (v - levels[k]) slope[k] + values[k], the line through knots k and k + 1; pixels of no
/// interval are copied. `src` and `dst` are the same plane or lie apart.
Status lutLinearF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h, const float* values, const float* levels,
                    std::int32_t n) noexcept;

/// The cubic through the four knots j .. j + 3 with j = min(max(k - 1, 0), n - 4), so that the
/// first and the last interval share the polynomial of their neighbour. With fewer than four
/// levels this is `lutLinearF32`. Where two of the four levels coincide, the divided difference
/// over them counts as 0.
Status lutCubicInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                          const float* values, const float* levels, std::int32_t n) noexcept;

} // namespace vel
