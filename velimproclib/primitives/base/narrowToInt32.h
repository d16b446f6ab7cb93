#pragma once

#include <cstdint>
#include <limits>

namespace vel {

/// Narrows to 32 bits. A value out of range becomes the nearest end of the range.
constexpr std::int32_t narrowToInt32(std::int64_t value) noexcept {
    constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value < kLowest ? kLowest
                                                     : (value > kHighest ? kHighest : value));
}

} // namespace vel
