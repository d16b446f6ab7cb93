#pragma once

#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Integer arithmetic on rows of unsigned 16-bit elements at any address.
///
/// A `scale` below 0 multiplies the result by 2^-scale. A `scale` above 0 divides it by 2^scale and
/// rounds to nearest, ties to even. Any scale is legal, and the result saturates at 65535.
///
/// Both return `kOk`, `kNullPointer`, `kBadSize` or `kBadStep`, checked in this order, and write
/// nothing when a check fails. Re-entrant.
namespace vel {

/// srcDst = (srcDst + value), scaled. The sum does not saturate before it is scaled.
Status addConstScaledU16(std::uint16_t value, Unaligned<std::uint16_t>* srcDst, std::int32_t step,
                         std::int32_t w, std::int32_t h, std::int32_t scale) noexcept;

/// dst = max(src - value, 0), scaled. `src` and `dst` are the same plane or do not overlap.
Status subConstScaledU16(const Unaligned<std::uint16_t>* src, std::int32_t srcStep,
                         std::uint16_t value, Unaligned<std::uint16_t>* dst, std::int32_t dstStep,
                         std::int32_t w, std::int32_t h, std::int32_t scale) noexcept;

} // namespace vel
