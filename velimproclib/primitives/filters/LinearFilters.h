#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// One-dimensional convolution along the rows or the columns of a plane.
///
/// With `first = len - 1 - anchor`, pixel x of the result is the sum over k = 0 .. len-1 of
/// `kernel[len-1-k] * src[x - first + k]`, and the same with y down a column: the kernel is turned
/// round, as a convolution demands, and its tap `anchor` meets the pixel itself. `src` points at
/// the first pixel of the region; the `first` pixels before each row (column) and the `anchor`
/// pixels behind it are read and must exist. That `0 <= anchor < len` is the caller's duty and not
/// checked: any other anchor moves the window off the pixel, by as much as it says. The region is
/// `w` by `h` pixels; source and target do not overlap. Steps are bytes between rows, of any
/// alignment.
///
/// Result: `kOk`, `kNullPointer`, `kBadSize` (also for `len`), `kBadStep` (of a column filter also
/// when `srcStep` is shorter than a row), `kBadBorderStep` when `srcStep` of a row filter is
/// shorter than a row with its border, and `kDivisorZero`, complained of in that order; after a
/// complaint nothing has been written. All are re-entrant and allocate nothing.
namespace vel {

/// Accumulated in double in the order of k and rounded to float once; a sum beyond the range of
/// floats gives infinity.
Status filterRowF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h, const float* kernel, std::int32_t len,
                    std::int32_t anchor) noexcept;
Status filterColumnF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                       std::int32_t w, std::int32_t h, const float* kernel, std::int32_t len,
                       std::int32_t anchor) noexcept;

/// The exact integer sum divided by `divisor`, halves rounded up, cut to 0..255. The magnitudes of
/// the kernel may add up to 2^53.
Status filterRowU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h, const std::int32_t* kernel,
                   std::int32_t len, std::int32_t anchor, std::int32_t divisor) noexcept;
Status filterColumnU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h,
                      const std::int32_t* kernel, std::int32_t len, std::int32_t anchor,
                      std::int32_t divisor) noexcept;

} // namespace vel
