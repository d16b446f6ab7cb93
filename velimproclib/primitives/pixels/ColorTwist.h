#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

namespace vel {

/// Applies a 3 by 4 matrix to the pixels of three float planes in place: with (p0, p1, p2) the
/// values of a pixel, plane r becomes coef[r][0] p0 + coef[r][1] p1 + coef[r][2] p2 + coef[r][3].
/// All in single precision, the sum from left to right, the constant last.
///
/// The three planes share `step`, `w` and `h` and lie apart from each other. Returns
/// `kNullPointer` (the array, a plane or the matrix), `kBadSize` or `kBadStep`, looked for in this
/// order, and then has written nothing.
Status colorTwistP3F32(float* const planes[3], std::int32_t step, std::int32_t w, std::int32_t h,
                       const float coef[3][4]) noexcept;

} // namespace vel
