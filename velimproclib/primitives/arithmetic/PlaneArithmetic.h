#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Element-wise arithmetic on float planes.
///
/// A plane is the pointer to its first pixel, the bytes between its rows, and its size in pixels.
/// Every result is that of one single-precision operation per element (the logarithm and the
/// comparison apart), so it is the same on every processor, apart from which NaN comes out of an
/// operation on two. Where a routine takes several planes,
/// each may be the same plane as another, or lie apart from it; planes that overlap otherwise are
/// not allowed.
///
/// All return `kNullPointer`, `kBadSize` or `kBadStep`, looked for in this order, and then have
/// written nothing.
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
/// `kDivisionByZero`; the rest of the plane is divided all the same.
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
/// gives minus infinity, a negative number NaN; when a row holds either, the warning
/// `kDivisionByZero` (the result holds NaN or infinities) is returned and the plane is done all the
/// same. NaN gives NaN, plus infinity stays, and neither raises a warning.
Status logInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h) noexcept;

/// dst = 255 where `a op b`, else 0; comparisons with NaN are false. `dst` is a byte plane and may
/// not overlap the others. A code outside `Comparison` gives `kBadMask`, the status for unknown
/// codes, looked for last.
Status comparePlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                        std::uint8_t* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h,
                        Comparison op) noexcept;

} // namespace vel
