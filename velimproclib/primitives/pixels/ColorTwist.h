#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

namespace vel {

/// Applies a 3 by 4 matrix to the pixels of three float planes in place: with (p0, p1, p2) the
/// values of a pixel, plane r becomes coef[r][0] p0 + coef[r][1] p1 + coef[r][2] p2 + coef[r][3],
/// in single precision, summed from left to right, the constant last.
///
/// The three planes share `step`, `w` and `h` and do not overlap. Returns `kOk`, `kNullPointer`
/// (for the array, a plane or the matrix), `kBadSize` or `kBadStep`, checked in this order; writes
/// nothing when a check fails. Re-entrant.
Status colorTwistP3F32(float* const planes[3], std::int32_t step, std::int32_t w, std::int32_t h,
                       const float coef[3][4]) noexcept;

} // namespace vel
