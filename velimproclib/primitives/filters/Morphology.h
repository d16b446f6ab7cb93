#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Maximum (dilation) and minimum (erosion) over the 3 by 3 neighbourhood.
///
/// The source pointer stands at the first pixel of the region; the one-pixel frame around the
/// region is read and must exist. Regions are `w` by `h` pixels; steps are bytes between rows, of
/// any alignment. Result: `kOk`, `kNullPointer`, `kBadSize`, `kBadStep`, and `kBadBorderStep` when
/// the source's step is shorter than a row with its frame, complained of in that order; after a
/// complaint nothing has been written. All are re-entrant.
namespace vel {

/// Source and target do not overlap. Of equal extremes (zeros of both signs) the first in reading
/// order is taken. With a NaN in the neighbourhood any of its values may come out, but the same one
/// on every processor variant.
Status dilate3x3F32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h) noexcept;
Status erode3x3F32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                   std::int32_t w, std::int32_t h) noexcept;

/// In place, as if from a copy of the image; the frame keeps its values. Works through a buffer of
/// two rows, which lies on the stack up to 4096 pixels of width and on the heap beyond:
/// `kOutOfMemory`, with nothing written, when there is none.
Status dilate3x3InPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w,
                          std::int32_t h) noexcept;
Status erode3x3InPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w,
                         std::int32_t h) noexcept;

} // namespace vel
