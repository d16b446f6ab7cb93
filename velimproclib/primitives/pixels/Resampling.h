#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

namespace vel {

/// A rectangle of pixels inside an image.
struct PixelRect {
    std::int32_t x;
    std::int32_t y;
    std::int32_t w;
    std::int32_t h;
};

/// Codes of `resizeU8`.
enum Interpolation : std::int32_t { kLinear = 2 };

/// Resamples `srcRect` of an 8-bit plane with bilinear interpolation.
///
/// Values belong to the centres of pixels: pixel x of the result is the source at
/// `(x + 0.5)/xFactor - 0.5`, counted from the left edge of `srcRect`, and the same for rows.
/// Beyond the centres of the rectangle's outermost pixels, these are repeated. Weights have 14
/// fractional bits. The horizontal pass rounds to 7 fractional bits, the vertical pass to whole
/// pixel values.
///
/// The result is `min(dstW, floor(srcW*xFactor + 0.0000001))` pixels wide, and its height follows
/// the same rule. Target pixels beyond it are not written. A result without pixels is no error.
///
/// @param src the first pixel of the whole source image, `srcW` by `srcH`
/// @param srcRect the part to resample; it is clipped to the image
/// @param xFactor,yFactor above 0, infinity included
/// @param interpolation `kLinear`
/// @return `kOk`, `kNullPointer`, `kBadSize` (a size below 1, a rectangle outside the image, a
/// factor that is NaN or not above 0), `kBadStep`, or `kBadMask` for an unknown interpolation,
/// checked in this order; writes nothing when a check fails. Re-entrant, allocates nothing.
Status resizeU8(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH, std::int32_t srcStep,
                const PixelRect& srcRect, std::uint8_t* dst, std::int32_t dstStep,
                std::int32_t dstW, std::int32_t dstH, double xFactor, double yFactor,
                std::int32_t interpolation) noexcept;

} // namespace vel
