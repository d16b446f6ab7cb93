#pragma once

namespace vel {

/// Rounds to single precision: marks the points where a computation in doubles is rounded.
constexpr float toFloat(double value) noexcept {
    return static_cast<float>(value);
}

} // namespace vel
