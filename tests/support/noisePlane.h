#pragma once

#include <opencv2/core.hpp>
#include <random>

namespace vel::test {

/// A plane of uniform noise between `low` and `high`.
inline cv::Mat_<float> noisePlane(int rows, int cols, unsigned seed, float low, float high) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> pixel(low, high);
    cv::Mat_<float> plane(rows, cols);
    for (float& value : plane) {
        value = pixel(random);
    }
    return plane;
}

} // namespace vel::test
