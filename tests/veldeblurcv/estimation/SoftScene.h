#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>

namespace vel::test {

/// Rings, bars and grain, blurred by a box of 5 by 5 pixels. Computed in integers, so that every
/// platform has the same pixels.
inline cv::Mat_<std::uint8_t> softScene(int width, int height) {
    const auto sharp = [](int x, int y) {
        const int squared = (x - 70) * (x - 70) + (y - 50) * (y - 50);
        const bool isRing = squared / 700 % 2 == 0;
        const bool isBar = (x / 9 + y / 23) % 2 == 0;
        const unsigned grain = (static_cast<unsigned>(x * 31 + y) * 2654435761u) >> 29;
        return 40 + (isRing ? 90 : 0) + (isBar ? 50 : 0) + static_cast<int>(grain);
    };
    cv::Mat_<std::uint8_t> scene(height, width);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int sum = 0;
            for (int i = 0; i < 25; ++i) {
                sum += sharp(x + i % 5, y + i / 5);
            }
            scene(y, x) = static_cast<std::uint8_t>(sum / 25);
        }
    }
    return scene;
}

/// A kernel that the estimator must overwrite.
inline cv::Mat unsolvedKernel(int width, int height) {
    return cv::Mat(height, width, CV_32FC1, cv::Scalar(-3.0));
}

/// A disc of `radius` pixels, not smoothed, sum 1.
inline cv::Mat plainDiscKernel(int side, double radius) {
    cv::Mat kernel(side, side, CV_32FC1);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double distance = std::hypot(x - side / 2, y - side / 2);
            kernel.at<float>(y, x) =
                static_cast<float>(std::clamp(radius + 0.5 - distance, 0.0, 1.0));
        }
    }
    return kernel / cv::sum(kernel)[0];
}

} // namespace vel::test
