#pragma once

#include "velimproclib/tiles/planBlocks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

/// The steps of a tile walk as plain arithmetic, the reference of both tile iterators.
namespace vel::test {

/// Starts of the tiles along an axis, the last one pulled back to end where the image ends.
inline std::vector<int> tileStarts(int total, int useful, int overlap) {
    const TileGeometry plan = planBlocks(0, total, useful, overlap);
    std::vector<int> all{0};
    while (all.back() + useful < total) {
        all.push_back(std::max(std::min(all.back() + plan.step, total - useful), 0));
    }
    return all;
}

/// Weights of a fade over `n` pixels, and 1.
inline std::vector<float> fadeWeights(int n) {
    std::vector<float> weights;
    const auto inverse = static_cast<double>(1.0F / static_cast<float>(n + 1));
    for (int i = 0; i < n; ++i) {
        weights.push_back(static_cast<float>((i + 1) * inverse));
    }
    weights.push_back(1.0F);
    return weights;
}

inline float mixed(double old, double fresh, float weight) {
    const auto a = static_cast<double>(weight);
    return static_cast<float>(old * (1 - a) + fresh * a);
}

/// The pixel nearest to `value`, ties to even.
template <class T>
T nearestPixel(float value) {
    const double nearest = std::nearbyint(static_cast<double>(value));
    return static_cast<T>(std::clamp(nearest, static_cast<double>(std::numeric_limits<T>::min()),
                                     static_cast<double>(std::numeric_limits<T>::max())));
}

} // namespace vel::test
