#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>

namespace restoration {

/// Directions of frequencies: the one of number i is at the angle i pi/8, from left to right
/// towards downwards.
inline constexpr std::size_t kDirections = 8;

/// The number of the direction nearest to `angle`, -pi..pi radians; opposite angles have the same.
inline std::size_t directionOf(double angle) {
    const double turn = angle / std::numbers::pi * static_cast<double>(kDirections);
    return static_cast<std::size_t>(std::lround(turn) + static_cast<long>(kDirections)) %
           kDirections;
}

} // namespace restoration
