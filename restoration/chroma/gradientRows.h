#pragma once

#include <cstddef>

/// The gradients of a plane that is periodic, one row at a time. A gradient is the forward
/// difference to the next column and to the row below; column 0 follows the last column. Rows of
/// results do not overlap their sources; `count` is at least 2.
namespace restoration {

/// energy = gx^2 + gy^2 of the pixels of `row`.
void gradientEnergy(const float* row, const float* below, float* energy,
                    std::size_t count) noexcept;

/// gain = e / (e + noise), e the mean energy of the 3 by 3 pixels around; 0 where both are 0.
void gradientGain(const float* energyAbove, const float* energy, const float* energyBelow,
                  float noise, float* gain, std::size_t count) noexcept;

/// wx = gain gx, wy = gain gy.
void scaledGradient(const float* row, const float* below, const float* gain, float* wx, float* wy,
                    std::size_t count) noexcept;

} // namespace restoration
