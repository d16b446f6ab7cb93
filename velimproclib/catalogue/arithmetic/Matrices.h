#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Sums and products of small strided vectors and matrices.
///
/// Strides are in bytes and multiples of 4, for doubles too: `stride1` is the distance of rows,
/// `stride2` the distance of columns in a row. Therefore a transposed or subsampled view needs no
/// copy. Elements may have any address. The targets of the element-wise forms may be one of the
/// sources; those of the products do not overlap them.
///
/// All return `kOk`, `kNullPointer`, `kBadSize` (a dimension below 1), `kBadMatrixSize` (dimensions
/// that do not match) or `kBadMatrixStride` (a stride below 1 or no multiple of 4), checked in this
/// order, and write nothing when a check fails. Everything is computed in the element type, sums in
/// the order of the rows.
namespace vel {

/// dst = src + value
Status addVecConstF32(const float* src, std::int32_t stride, float value, float* dst,
                      std::int32_t dstStride, std::int32_t len) noexcept;

/// dst = src * value
Status mulVecConstF32(const float* src, std::int32_t stride, float value, float* dst,
                      std::int32_t dstStride, std::int32_t len) noexcept;

/// dst = a + b
Status addVecF32(const float* a, std::int32_t aStride, const float* b, std::int32_t bStride,
                 float* dst, std::int32_t dstStride, std::int32_t len) noexcept;
/// @copydoc addVecF32
Status addVecF64(const double* a, std::int32_t aStride, const double* b, std::int32_t bStride,
                 double* dst, std::int32_t dstStride, std::int32_t len) noexcept;

/// dst = a + b, for matrices of `width` columns and `height` rows.
Status addMatF32(const float* a, std::int32_t aS1, std::int32_t aS2, const float* b,
                 std::int32_t bS1, std::int32_t bS2, float* dst, std::int32_t dS1, std::int32_t dS2,
                 std::int32_t width, std::int32_t height) noexcept;
/// @copydoc addMatF32
Status addMatF64(const double* a, std::int32_t aS1, std::int32_t aS2, const double* b,
                 std::int32_t bS1, std::int32_t bS2, double* dst, std::int32_t dS1,
                 std::int32_t dS2, std::int32_t width, std::int32_t height) noexcept;

/// dst[k] = sum over the rows d of m[d][k] v[d]: the transpose of `m` (`width` columns, `height`
/// rows) times `v`. `dst` takes `width` elements; `height` must equal `vLen`.
Status matTransMulVecF32(const float* m, std::int32_t stride1, std::int32_t stride2,
                         std::int32_t width, std::int32_t height, const float* v,
                         std::int32_t vStride, std::int32_t vLen, float* dst,
                         std::int32_t dstStride) noexcept;
/// @copydoc matTransMulVecF32
Status matTransMulVecF64(const double* m, std::int32_t stride1, std::int32_t stride2,
                         std::int32_t width, std::int32_t height, const double* v,
                         std::int32_t vStride, std::int32_t vLen, double* dst,
                         std::int32_t dstStride) noexcept;

/// dst[i][j] = sum over the rows d of a[d][i] b[d][j]: the transpose of `a` times `b`, with
/// `aWidth` rows and `bWidth` columns. `aHeight` must equal `bHeight`.
Status matTransMulMatF32(const float* a, std::int32_t aS1, std::int32_t aS2, std::int32_t aWidth,
                         std::int32_t aHeight, const float* b, std::int32_t bS1, std::int32_t bS2,
                         std::int32_t bWidth, std::int32_t bHeight, float* dst, std::int32_t dS1,
                         std::int32_t dS2) noexcept;
/// @copydoc matTransMulMatF32
Status matTransMulMatF64(const double* a, std::int32_t aS1, std::int32_t aS2, std::int32_t aWidth,
                         std::int32_t aHeight, const double* b, std::int32_t bS1, std::int32_t bS2,
                         std::int32_t bWidth, std::int32_t bHeight, double* dst, std::int32_t dS1,
                         std::int32_t dS2) noexcept;

} // namespace vel
