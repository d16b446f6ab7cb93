#pragma once

#include "restoration/tiles/Mask.h"
#include "tests/restoration/deconvolution/CircularScene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

/// Scenes in light, periodic over a square, and what a camera stores of them.
namespace restoration::test {

inline Plane darkScene(int side) {
    Plane scene = circularScene(side);
    for (float& value : scene.values()) {
        value *= 0.3f;
    }
    return scene;
}

/// Adds a round lamp of `light` times white.
inline void addLamp(Plane& scene, double x, double y, double radius, float light) {
    for (int row = 0; row < scene.height(); ++row) {
        for (int column = 0; column < scene.width(); ++column) {
            if (std::hypot(column - x, row - y) <= radius) {
                scene.row(row)[column] = light;
            }
        }
    }
}

/// Bars of black print on paper of `light` times white.
inline Plane printedPage(int side, float light) {
    Plane page(side, side);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const bool isInk = (y / 12) % 2 == 1 && (x * 7 + y / 24 * 13) % 60 < 24 &&
                               (x / 3 + y / 3) % 3 != 0 && x > side / 4;
            page.row(y)[x] = isInk ? 0.02f : light;
        }
    }
    return page;
}

/// Adds normal noise and clips at black and white.
inline void expose(Plane& light, double noise) {
    std::mt19937 random(5);
    std::normal_distribution<double> error(0.0, 1.0);
    for (float& value : light.values()) {
        const double noisy = static_cast<double>(value) + noise * error(random);
        value = static_cast<float>(std::clamp(noisy, 0.0, 1.0));
    }
}

inline Mask allKnown(int side) {
    Mask known(side, side);
    for (int y = 0; y < side; ++y) {
        std::fill_n(known.row(y), side, std::uint8_t{1});
    }
    return known;
}

} // namespace restoration::test
