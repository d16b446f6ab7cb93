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
/// Pixels are squares and their values stand at the centres: pixel x of the result shows the source
/// at `(x + 0.5)/xFactor - 0.5`, counted from the left edge of `srcRect`, and the same for rows;
/// beyond the centres of the rectangle's outermost pixels these are repeated. Weights have 14
/// fractional bits, the two passes are rounded to 7 fractional bits and to the pixel.
///
/// The result is `min(dstW, floor(srcW*xFactor + 0.0000001))` pixels wide and as many rows high by
/// the same rule; pixels of the target beyond it are not written, and a result without pixels is no
/// error.
///
/// @param src the first pixel of the whole source image, `srcW` by `srcH`
/// @param srcRect the part that is shown; what reaches out of the image is cut off
/// @param xFactor,yFactor above 0; infinity counts as very large
/// @param interpolation `kLinear`
/// @return `kOk`, `kNullPointer`, `kBadSize` (a size below 1, no rectangle left, a factor not above
/// 0 or NaN), `kBadStep`, or `kBadMask` for an unknown interpolation, complained of in that order;
/// after a complaint nothing has been written. Re-entrant, allocates nothing.
Status resizeU8(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH, std::int32_t srcStep,
                const PixelRect& srcRect, std::uint8_t* dst, std::int32_t dstStep,
                std::int32_t dstW, std::int32_t dstH, double xFactor, double yFactor,
                std::int32_t interpolation) noexcept;

} // namespace vel
