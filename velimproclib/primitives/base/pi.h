#pragma once

namespace vel {

/// Pi and its half to six decimals, as the kernels prescribe them. More digits would change kernels
/// in their last bits: with these, the cosine of 90 degrees stays slightly above zero.
inline constexpr double kPi = 3.141592;
inline constexpr double kHalfPi = 1.570796;

} // namespace vel
