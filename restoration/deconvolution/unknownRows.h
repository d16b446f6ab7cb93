#pragma once

#include <cstddef>
#include <cstdint>

/// Row operations of the estimate of unknown pixels. Targets overlap no other row. All processor
/// variants give the same bits.
namespace restoration {

/// target = source where `known` is 0.
void replaceUnknown(const std::uint8_t* known, const float* source, float* target,
                    std::size_t count) noexcept;

/// next = values + share (values - previous), then previous = values.
void extrapolate(float share, const float* values, float* previous, float* next,
                 std::size_t count) noexcept;

} // namespace restoration
