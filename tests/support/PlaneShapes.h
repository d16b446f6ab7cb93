#pragma once

#include "tests/support/FloatComparison.h"
#include "tests/support/GuardedPlane.h"

#include <random>
#include <vector>

namespace vel::test {

/// Size of a plane, padding of its rows and distance of its start from alignment, in bytes.
struct PlaneShape {
    int width;
    int height;
    int extraStep;
    int misalign;

    template <class T>
    GuardedPlane<T> plane(int elementsPerPixel = 1) const {
        return GuardedPlane<T>(width * elementsPerPixel, height, extraStep, misalign);
    }
};

/// Sizes from 1 to 67 with odd steps and starts, some with adjacent rows, and a large size.
inline std::vector<PlaneShape> planeShapes(std::mt19937& random) {
    std::vector<PlaneShape> all{{1, 1, 0, 0}, {2, 3, 0, 0},  {3, 2, 1, 1},
                                {1, 5, 7, 3}, {64, 4, 0, 0}, {1031, 9, 3, 5}};
    for (int i = 0; i < 60; ++i) {
        all.push_back({static_cast<int>(random() % 67) + 1, static_cast<int>(random() % 5) + 1,
                       static_cast<int>(random() % 9), static_cast<int>(random() % 16)});
    }
    return all;
}

inline bool sameFloats(const GuardedPlane<float>& a, const GuardedPlane<float>& b) {
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (!sameFloat(a.at(x, y), b.at(x, y))) {
                return false;
            }
        }
    }
    return true;
}

/// `plane` with every element replaced by `of(value, x, y)`.
template <class T, class Of>
GuardedPlane<T> mapped(GuardedPlane<T> plane, Of&& of) {
    for (int y = 0; y < plane.height(); ++y) {
        for (int x = 0; x < plane.width(); ++x) {
            plane.set(x, y, of(plane.at(x, y), x, y));
        }
    }
    return plane;
}

} // namespace vel::test
