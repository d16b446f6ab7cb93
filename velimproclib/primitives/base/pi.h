#pragma once

namespace vel {

/// Pi and its half to six decimals, which define the kernels to the last bit. More digits would
/// change kernels: with these, the cosine of 90 degrees stays slightly above zero.
inline constexpr double kPi = 3.141592;
inline constexpr double kHalfPi = 1.570796;

} // namespace vel
