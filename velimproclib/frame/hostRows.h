#pragma once

#include "velimproclib/images/FormatCodes.h"

#include <cstdint>

namespace vel {

/// True if `step` bytes are too few for a row of `width` pixels of three channels. The step of a
/// single row is not used and therefore not checked.
constexpr bool isShorterThanARow(std::int32_t step, std::int32_t format, std::int32_t width,
                                 std::int32_t height) noexcept {
    const std::int64_t pixelBytes = isEightBits(format) ? 3 : 6;
    return height > 1 && step < width * pixelBytes;
}

} // namespace vel
