#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Vector routines next to those of primitives/arithmetic/Vectors.h, with the same conventions.
namespace vel {

/// dst = src
Status copyVecF32(const float* src, float* dst, std::int32_t len) noexcept;

/// dst = b - a; mind the order.
Status subVecF64(const double* a, const double* b, double* dst, std::int32_t len) noexcept;

/// srcDst -= src
Status subVecInPlaceF64(const double* src, double* srcDst, std::int32_t len) noexcept;

/// srcDst /= src. A zero in `src`, of either sign, gives infinity or NaN there and the warning
/// `kDivisionByZero`; all other elements are divided.
Status divVecInPlaceF64(const double* src, double* srcDst, std::int32_t len) noexcept;

/// dst = |src|; the sign of a NaN is cleared too.
Status absVecF64(const double* src, double* dst, std::int32_t len) noexcept;

/// dst[2i] = re[i], dst[2i + 1] = im[i]: `dst` holds 2 `len` floats and does not overlap the
/// sources. A null `re` or `im` counts as zeros.
Status realToComplexVec(const float* re, const float* im, float* dst, std::int32_t len) noexcept;

} // namespace vel
