#pragma once

#include "restoration/planes/Plane.h"

#include <random>

namespace restoration::test {

inline void addNoise(Plane& plane, double deviation, unsigned seed = 5) {
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0.0, 1.0);
    for (float& value : plane.values()) {
        value += static_cast<float>(deviation * noise(random));
    }
}

/// Normal noise alone.
inline Plane noisePlane(int side, double deviation, unsigned seed = 5) {
    Plane plane(side, side);
    for (float& value : plane.values()) {
        value = 0.0f;
    }
    addNoise(plane, deviation, seed);
    return plane;
}

} // namespace restoration::test
