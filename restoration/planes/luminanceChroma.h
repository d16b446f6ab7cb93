#pragma once

#include <span>

namespace restoration {

/// Replaces red, green and blue by luminance and the two chroma values of ITU-R BT.601, blue first.
/// All spans have one size.
void toLuminanceChroma(std::span<float> red, std::span<float> green,
                       std::span<float> blue) noexcept;

/// The inverse of `toLuminanceChroma`, up to rounding.
void fromLuminanceChroma(std::span<float> luminance, std::span<float> blueChroma,
                         std::span<float> redChroma) noexcept;

} // namespace restoration
