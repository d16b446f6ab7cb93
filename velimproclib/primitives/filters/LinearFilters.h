#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// One-dimensional convolution along the rows or the columns of a plane.
///
/// With `first = len - 1 - anchor`, pixel x of the result is the sum over k = 0 .. len-1 of
/// `kernel[len-1-k] * src[x - first + k]`, and the same with y down a column: the kernel is
/// flipped, as in every convolution, and its tap `anchor` multiplies the pixel itself. `src` points
/// at the first pixel of the region; the `first` pixels before each row (column) and the `anchor`
/// pixels after it are read and must exist. The caller ensures `0 <= anchor < len`; it is not
/// checked, and any other anchor moves the window away from the pixel. The region is `w` by `h`
/// pixels; source and target do not overlap. Steps are bytes between rows, of any alignment.
///
/// All return `kOk`, `kNullPointer`, `kBadSize` (also for `len`), `kBadStep` (for a column filter
/// also when `srcStep` is shorter than a row), `kBadBorderStep` when `srcStep` of a row filter is
/// shorter than a row with its border, or `kDivisorZero`, checked in this order, and write nothing
/// when a check fails. Re-entrant, allocate nothing.
namespace vel {

/// Accumulated in double in the order of k and rounded to float once; a sum beyond the range of
/// floats gives infinity.
Status filterRowF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h, const float* kernel, std::int32_t len,
                    std::int32_t anchor) noexcept;
Status filterColumnF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                       std::int32_t w, std::int32_t h, const float* kernel, std::int32_t len,
                       std::int32_t anchor) noexcept;

/// The exact integer sum divided by `divisor`, halves rounded up, clamped to 0..255. The magnitudes
/// of the kernel may sum to 2^53.
Status filterRowU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h, const std::int32_t* kernel,
                   std::int32_t len, std::int32_t anchor, std::int32_t divisor) noexcept;
Status filterColumnU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h,
                      const std::int32_t* kernel, std::int32_t len, std::int32_t anchor,
                      std::int32_t divisor) noexcept;

} // namespace vel
