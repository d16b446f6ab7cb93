#include "velimproclib/veldeblurcv/estimation/levels/buildPyramid.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>

namespace vel {

namespace {

constexpr int kSmallestSide = 32;
constexpr int kLargestSingleLevelKernel = 3;

bool isTooSmall(const cv::Mat& image) {
    return image.cols < kSmallestSide || image.rows < kSmallestSide;
}

} // namespace

int buildPyramid(std::span<cv::Mat> images, std::span<cv::Mat> kernels) {
    const int side = std::max(kernels[0].cols, kernels[0].rows);
    if (side <= kLargestSingleLevelKernel) {
        return 0;
    }
    std::size_t level = 0;
    for (int extent = (side - 1) / 2 / 2; extent > 0 && level + 1 < images.size(); extent /= 2) {
        ++level;
        cv::pyrDown(images[level - 1], images[level]);
        kernels[level].create(2 * extent + 1, 2 * extent + 1, CV_32FC1);
        // The first image below the limit is kept as the coarsest level.
        if (isTooSmall(images[level])) {
            break;
        }
    }
    return static_cast<int>(level);
}

} // namespace vel
