#pragma once

#include <cstddef>

/// Row operations on a column block of a half spectrum: a row is 16 real parts, then the 16
/// imaginary parts (`vel::RealFft2D`). All pointers are aligned to 64 bytes. All processor variants
/// give the same bits.
namespace restoration {

/// x = (numerator + weight x) / (|K|^2 + weight)
void approachRows(const float* kernel, const float* numerator, float weight, float* x,
                  std::size_t rows) noexcept;

/// power = |K|^2 / (|K|^2 + weight)^2, a real spectrum: what `approachRows` leaves of white noise.
void remainingNoiseRows(const float* kernel, float weight, float* power, std::size_t rows) noexcept;

} // namespace restoration
