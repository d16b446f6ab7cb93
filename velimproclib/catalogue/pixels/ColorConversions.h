#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Conversions of element type on pixels of three elements: the rules of
/// primitives/pixels/Conversions.h, with `w` counting pixels.
namespace vel {

Status convertU8toF32C3(const std::uint8_t* src, std::int32_t srcStep, float* dst,
                        std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status convertU16toF32C3(const std::uint16_t* src, std::int32_t srcStep, float* dst,
                         std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;
Status convertF32toU8C3(const float* src, std::int32_t srcStep, std::uint8_t* dst,
                        std::int32_t dstStep, std::int32_t w, std::int32_t h,
                        std::int32_t round) noexcept;
Status convertF32toU16C3(const float* src, std::int32_t srcStep, std::uint16_t* dst,
                         std::int32_t dstStep, std::int32_t w, std::int32_t h,
                         std::int32_t round) noexcept;

} // namespace vel
