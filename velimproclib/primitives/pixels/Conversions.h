#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Conversions of element type, plane to plane.
///
/// Common to all: `src` and `dst` point at the first pixel of regions of `w` by `h` pixels that do
/// not overlap; steps are bytes between rows, above 0 and of any alignment. In the C3 forms a pixel
/// is three elements. The result is `kOk`, `kNullPointer`, `kBadSize` or `kBadStep`, complained of
/// in that order; after a complaint nothing has been written. All are re-entrant.
///
/// Widening is exact. Narrowing saturates to the target's range. Floats are rounded as `round`
/// says: to nearest with ties to even for `kToNearestEven`, toward zero for every other code, and
/// saturate after that; infinities give the nearer end of the range and NaN gives 0. Rounding is
/// the processor's, under the rounding mode that a process starts with.
namespace vel {

Status convertU8toF32(const std::uint8_t* src, std::int32_t srcStep, float* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status convertU16toF32(const std::uint16_t* src, std::int32_t srcStep, float* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status convertS16toF32(const std::int16_t* src, std::int32_t srcStep, float* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// Zero extension.
Status convertU8toU16(const std::uint8_t* src, std::int32_t srcStep, std::uint16_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
/// Values above 255 become 255.
Status convertU16toU8(const std::uint16_t* src, std::int32_t srcStep, std::uint8_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

Status convertF32toU8(const float* src, std::int32_t srcStep, std::uint8_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h,
                      std::int32_t round) noexcept;
Status convertF32toU16(const float* src, std::int32_t srcStep, std::uint16_t* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h,
                       std::int32_t round) noexcept;
Status convertF32toS16(const float* src, std::int32_t srcStep, std::int16_t* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h,
                       std::int32_t round) noexcept;

} // namespace vel
