#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Operations in place between the elements of interleaved pixels and one constant per element.
///
/// `srcDst` points at the first pixel of `w` by `h` pixels; `step` is bytes between rows, of any
/// alignment. All return `kNullPointer`, `kBadSize` or `kBadStep`, checked in this order, and write
/// nothing then. Re-entrant.
namespace vel {

/// Adds c[0], c[1], c[2] to the elements of every pixel, in single precision.
Status addConstInPlaceC3F32(const float c[3], float* srcDst, std::int32_t step, std::int32_t w,
                            std::int32_t h) noexcept;

/// Multiplies the elements of every pixel by c[0], c[1], c[2], in single precision.
Status mulConstInPlaceC3F32(const float c[3], float* srcDst, std::int32_t step, std::int32_t w,
                            std::int32_t h) noexcept;

/// Values of a plane above `level` become `level`.
Status clampAboveU16(std::uint16_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                     std::uint16_t level) noexcept;

/// Elements 0, 1 and 2 above level[0], level[1] and level[2] become that level.
Status clampAboveC3U16(std::uint16_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                       const std::uint16_t level[3]) noexcept;

/// The same on pixels of four elements: the levels belong to elements 1, 2 and 3, and element 0
/// keeps its value.
Status clampAboveC4U16(std::uint16_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                       const std::uint16_t level[3]) noexcept;

} // namespace vel
