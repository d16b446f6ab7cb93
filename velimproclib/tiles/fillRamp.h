#pragma once

#include <cstdint>
#include <span>

namespace vel {

/// The weights of a tile that fades in over the `n` pixels it shares with its neighbour:
/// `ramp[i]` = (i + 1) / (n + 1) for i below n, then `ramp[n]` = 1. No weight inside the overlap is
/// exactly 0 or 1. `ramp` holds at least n + 1 values, n is at least 0.
void fillRamp(std::span<float> ramp, std::int32_t n) noexcept;

} // namespace vel
