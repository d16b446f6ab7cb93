#pragma once

#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Conversions of element type, plane to plane.
///
/// `src` and `dst` point at the first pixel of regions of `w` by `h` pixels that do not overlap;
/// steps are bytes between rows, above 0 and of any alignment. All return `kOk`, `kNullPointer`,
/// `kBadSize` or `kBadStep`, checked in this order, and write nothing when a check fails.
/// Re-entrant.
///
/// Widening is exact. Narrowing saturates to the target's range. Floats are rounded first: to
/// nearest with ties to even for a `round` of `kToNearestEven`, toward zero for every other code.
/// Infinities give the nearer end of the range and NaN gives 0. The calling thread must round to
/// nearest, as every process does when it starts.
namespace vel {

Status convertU8toF32(const std::uint8_t* src, std::int32_t srcStep, float* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status convertU16toF32(const std::uint16_t* src, std::int32_t srcStep, float* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status convertS16toF32(const std::int16_t* src, std::int32_t srcStep, float* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// Zero extension, to elements at any address.
Status convertU8toU16(const std::uint8_t* src, std::int32_t srcStep, Unaligned<std::uint16_t>* dst,
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
