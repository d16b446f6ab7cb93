#pragma once

#include <cstddef>

/// Row operations of `FitProbe`. `signs` holds -1, 0 or 1 for each pixel, 0 for pixels that are not
/// looked at; targets overlap no other array. All processor variants give the same bits.
namespace restoration {

/// disturbed = y + amount signs
void disturbRow(const float* y, const float* signs, float amount, float* disturbed,
                std::size_t count) noexcept;

/// difference = a - b at the pixels looked at, 0 elsewhere.
void subtractKept(const float* a, const float* b, const float* signs, float* difference,
                  std::size_t count) noexcept;

/// The sum of the products of two rows, in double: 16 partial sums that are added in pairs. `count`
/// is a multiple of 16.
double dotRow(const float* a, const float* b, std::size_t count) noexcept;

/// target *= factors
void multiplyRow(const float* factors, float* target, std::size_t count) noexcept;

} // namespace restoration
