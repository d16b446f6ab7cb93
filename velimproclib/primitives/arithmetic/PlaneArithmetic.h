#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Element-wise arithmetic on float planes.
///
/// A plane is the pointer to its first pixel, the bytes between its rows, and its size in pixels.
/// Except for the logarithm and the comparison, every result is one single-precision operation per
/// element. Therefore the results are the same on every processor; only the choice between two NaN
/// operands may differ. Two planes of a call are the same plane or do not overlap.
///
/// All return `kOk`, `kNullPointer`, `kBadSize` or `kBadStep`, checked in this order, and write
/// nothing when a check fails. Re-entrant.
namespace vel {

/// srcDst += src
Status addPlaneF32(const float* src, std::int32_t srcStep, float* srcDst, std::int32_t srcDstStep,
                   std::int32_t w, std::int32_t h) noexcept;

/// srcDst -= src
Status subPlaneF32(const float* src, std::int32_t srcStep, float* srcDst, std::int32_t srcDstStep,
                   std::int32_t w, std::int32_t h) noexcept;

/// srcDst *= src
Status mulPlaneF32(const float* src, std::int32_t srcStep, float* srcDst, std::int32_t srcDstStep,
                   std::int32_t w, std::int32_t h) noexcept;

/// srcDst /= src. A zero in `src`, of either sign, gives infinity or NaN there and the warning
/// `kDivisionByZero`; all other pixels are divided.
Status divPlaneInPlaceF32(const float* src, std::int32_t srcStep, float* srcDst,
                          std::int32_t srcDstStep, std::int32_t w, std::int32_t h) noexcept;

/// dst = b - a; mind the order.
Status subPlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                    float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// dst = src * c
Status mulConstF32(const float* src, std::int32_t srcStep, float c, float* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// srcDst += c
Status addConstInPlaceF32(float c, float* srcDst, std::int32_t step, std::int32_t w,
                          std::int32_t h) noexcept;

/// srcDst *= c
Status mulConstInPlaceF32(float c, float* srcDst, std::int32_t step, std::int32_t w,
                          std::int32_t h) noexcept;

/// Values above `level` become `level`; NaN stays.
Status clampAboveInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                            float level) noexcept;

/// Values below `level` become `level`; NaN stays.
Status clampBelowInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                            float level) noexcept;

/// Natural logarithm, within 0.501 units in the last place and the same on every processor. Zero
/// gives minus infinity and a negative number NaN, both with the warning `kDivisionByZero` after
/// the whole plane is done. NaN gives NaN and plus infinity stays, both without a warning.
Status logInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h) noexcept;

/// dst = 255 where `a op b`, else 0; comparisons with NaN are false. `dst` is a byte plane and may
/// not overlap the others. A code outside `Comparison` gives `kBadMask`, checked last.
Status comparePlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                        std::uint8_t* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h,
                        Comparison op) noexcept;

} // namespace vel
