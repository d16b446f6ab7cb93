#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Integer arithmetic on rows of unsigned 16-bit elements.
///
/// `scale` below 0 multiplies a result by 2^-scale; above 0 it divides by 2^scale with rounding to
/// nearest, ties to even. Any scale is legal, and the result saturates at 65535.
///
/// All return `kNullPointer`, `kBadSize` or `kBadStep`, looked for in this order, and then have
/// written nothing.
namespace vel {

/// srcDst = (srcDst + value), scaled. The sum itself does not saturate before it is scaled.
Status addConstScaledU16(std::uint16_t value, std::uint16_t* srcDst, std::int32_t step,
                         std::int32_t w, std::int32_t h, std::int32_t scale) noexcept;

/// dst = max(src - value, 0), scaled. `src` and `dst` are the same plane or lie apart.
Status subConstScaledU16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t value,
                         std::uint16_t* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h,
                         std::int32_t scale) noexcept;

} // namespace vel
