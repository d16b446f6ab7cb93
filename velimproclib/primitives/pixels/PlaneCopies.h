#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Copying and filling float planes.
///
/// Regions are `w` by `h` pixels and do not overlap; steps are bytes between rows, above 0 and of
/// any alignment. Values are copied bit for bit. All return `kOk`, `kNullPointer`, `kBadSize` or
/// `kBadStep`, checked in this order, and write nothing when a check fails. Re-entrant.
namespace vel {

/// `dst = src`.
Status copyPlaneF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h) noexcept;

/// `dst = value`.
Status setPlaneF32(float value, float* dst, std::int32_t dstStep, std::int32_t w,
                   std::int32_t h) noexcept;

/// `dst = src` where the mask's byte is not 0. The other pixels of the region keep their value but
/// are written back: no other thread may write to any pixel of the region during the call.
Status copyMaskedF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h, const std::uint8_t* mask,
                     std::int32_t maskStep) noexcept;

} // namespace vel
