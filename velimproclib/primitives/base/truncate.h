#pragma once

#include <cstdint>
#include <limits>

namespace vel {

/// Truncates toward zero. Defined for every input: NaN gives 0, and a value out of the range of an
/// int32, infinities included, gives the nearest end of the range.
constexpr std::int32_t truncateToInt(double value) noexcept {
    constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
    if (value != value) {
        return 0;
    }
    if (value <= kLowest) {
        return std::numeric_limits<std::int32_t>::min();
    }
    if (value >= kHighest) {
        return std::numeric_limits<std::int32_t>::max();
    }
    return static_cast<std::int32_t>(value);
}

} // namespace vel
