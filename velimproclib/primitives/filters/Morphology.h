#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Maximum (dilation) and minimum (erosion) over the 3 by 3 neighbourhood.
///
/// The source pointer points at the first pixel of the region; the one-pixel frame around the
/// region is read and must exist. Regions are `w` by `h` pixels; steps are bytes between rows, of
/// any alignment. All return `kOk`, `kNullPointer`, `kBadSize`, `kBadStep`, or `kBadBorderStep`
/// when the source's step is shorter than a row with its frame, checked in this order, and write
/// nothing when a check fails. Re-entrant.
namespace vel {

/// Source and target do not overlap. Of equal extremes (zeros of both signs) the first in reading
/// order is taken. With a NaN in the neighbourhood the result is any of its values, the same on
/// every processor variant.
Status dilate3x3F32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h) noexcept;
Status erode3x3F32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                   std::int32_t w, std::int32_t h) noexcept;

/// In place, as if from a copy of the image; the frame keeps its values. Needs a buffer of two
/// rows: on the stack up to a width of 4096 pixels, on the heap beyond. Returns `kOutOfMemory` when
/// the heap is exhausted, with nothing written; callers must not ignore it.
[[nodiscard]] Status dilate3x3InPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w,
                                        std::int32_t h) noexcept;
[[nodiscard]] Status erode3x3InPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w,
                                       std::int32_t h) noexcept;

} // namespace vel
