#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Operations on flat vectors of `len` (or `n`) elements.
///
/// A target is one of the sources of its element type or does not overlap them. All return `kOk`,
/// `kNullPointer` or `kBadSize` (a length below 1), checked in this order, and write nothing when a
/// check fails. The results are the same on every processor; only the choice between two NaN
/// operands may differ. Re-entrant.
namespace vel {

/// dst = src, exactly.
Status vecF32toF64(const float* src, double* dst, std::int32_t len) noexcept;

/// dst = src, rounded to nearest. Values beyond the range of floats, infinities included, become
/// the largest finite float of their sign; NaN stays NaN.
Status vecF64toF32(const double* src, float* dst, std::int32_t len) noexcept;

/// y = a + b
Status vsAdd(std::int32_t n, const float* a, const float* b, float* y) noexcept;

/// y = a - b
Status vsSub(std::int32_t n, const float* a, const float* b, float* y) noexcept;

/// y = |a|; the sign of a NaN is cleared too.
Status vsAbs(std::int32_t n, const float* a, float* y) noexcept;

/// y = a^x, within 0.501 units in the last place. Zeros, infinities, NaN and negative bases follow
/// the rules of `std::pow` for any `x`. For example, a^0 is 1 for every a, 0 to a negative power is
/// infinite, and a negative number to a power that is no integer is NaN.
Status vsPowx(std::int32_t n, const float* a, float x, float* y) noexcept;

} // namespace vel
