#pragma once

#include <cstddef>
#include <cstdint>

/// Row operations on the unknown pixels of a tile. `known` holds 0 or 1 for each pixel; `count` is
/// a multiple of 16; targets overlap no other array. All processor variants give the same bits.
namespace restoration {

/// target = source at unknown pixels.
void replaceUnknown(const std::uint8_t* known, const float* source, float* target,
                    std::size_t count) noexcept;

/// difference = a - b at unknown pixels, 0 at known ones; `difference` may be `a` or `b`.
void subtractUnknown(const std::uint8_t* known, const float* a, const float* b, float* difference,
                     std::size_t count) noexcept;

/// The sum of the products of a row, in double: 16 partial sums that are added in pairs.
double dotRow(const float* a, const float* b, std::size_t count) noexcept;

/// target += factor source
void addScaledRow(float factor, const float* source, float* target, std::size_t count) noexcept;

/// target = source + factor target
void addToScaledRow(float factor, const float* source, float* target, std::size_t count) noexcept;

} // namespace restoration
