#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

namespace vel {

/// `dst = |a - b|`, pixel by pixel, over a region of `w` by `h` pixels. `dst` may be `a` or `b`.
/// Steps are bytes between rows. Returns `kOk`, `kNullPointer`, `kBadSize` or `kBadStep`, checked
/// in this order; writes nothing when a check fails. Re-entrant.
Status absDiffU8(const std::uint8_t* a, std::int32_t aStep, const std::uint8_t* b,
                 std::int32_t bStep, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
                 std::int32_t h) noexcept;

} // namespace vel
