#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstddef>
#include <cstdint>

/// Checks shared by the primitives that read a border around their region.
namespace vel {

/// `kBadBorderStep` when a step is shorter than a row of the region with its border, else `kOk`.
/// Follows the other checks of the arguments.
///
/// @param border pixels that are read beyond the region in a row, left and right together
/// @param pixelBytes bytes of one pixel of the source
[[nodiscard]] inline Status checkBorderStep(std::int32_t srcStep, std::int32_t w,
                                            std::int64_t border, std::size_t pixelBytes) noexcept {
    const std::int64_t rowBytes = (w + border) * static_cast<std::int64_t>(pixelBytes);
    return srcStep < rowBytes ? kBadBorderStep : kOk;
}

/// `kBadStep` when a step is shorter than a row of the region, else `kOk`. For primitives that read
/// no pixels at the sides.
[[nodiscard]] inline Status checkRowStep(std::int32_t srcStep, std::int32_t w,
                                         std::size_t pixelBytes) noexcept {
    return checkBorderStep(srcStep, w, 0, pixelBytes) == kOk ? kOk : kBadStep;
}

} // namespace vel
