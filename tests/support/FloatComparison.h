#pragma once

#include <cmath>
#include <concepts>
#include <limits>

namespace vel::test {

/// True for the same bits and for two NaN: the compiler decides which NaN an operation returns.
template <std::floating_point T>
bool sameFloat(T a, T b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

/// Distance of `value` from `exact`, in units in the last place of the float nearest to `exact`.
inline double unitsOff(float value, double exact) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float nearest = std::fabs(static_cast<float>(exact));
    if (nearest == kInfinity) {
        return value == static_cast<float>(exact) ? 0.0 : 1e9;
    }
    const float next = std::nextafter(nearest, kInfinity);
    const double unit =
        next == kInfinity ? 0x1p104 : static_cast<double>(next) - static_cast<double>(nearest);
    return std::fabs(static_cast<double>(value) - exact) / unit;
}

} // namespace vel::test
