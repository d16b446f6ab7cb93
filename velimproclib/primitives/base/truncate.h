#pragma once

#include <cstdint>
#include <limits>

namespace vel {

/// Truncates toward zero, defined for every input: NaN gives 0, values beyond the range of an
/// int32 (infinities included) give its nearest end.
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
