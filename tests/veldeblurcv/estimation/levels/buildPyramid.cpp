#include "velimproclib/veldeblurcv/estimation/levels/buildPyramid.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace {

struct Pyramid {
    std::vector<int> kernelSides;
    std::vector<cv::Size> images;
};

Pyramid pyramidOf(cv::Size image, cv::Size kernel) {
    std::array<cv::Mat, 8> images{cv::Mat(image, CV_8UC1, cv::Scalar(9))};
    std::array<cv::Mat, 8> kernels{cv::Mat(kernel, CV_32FC1, cv::Scalar(0))};
    const auto coarsest = static_cast<std::size_t>(vel::buildPyramid(images, kernels));
    Pyramid pyramid;
    for (std::size_t level = 0; level < images.size(); ++level) {
        if (level > coarsest) {
            EXPECT_TRUE(images[level].empty());
            EXPECT_TRUE(kernels[level].empty());
            continue;
        }
        EXPECT_EQ(images[level].type(), CV_8UC1);
        EXPECT_EQ(kernels[level].type(), CV_32FC1);
        if (level > 0) {
            EXPECT_EQ(kernels[level].rows, kernels[level].cols);
        }
        pyramid.kernelSides.push_back(std::max(kernels[level].cols, kernels[level].rows));
        pyramid.images.push_back(images[level].size());
    }
    return pyramid;
}

TEST(BuildPyramid, KernelSidesHalveDownToThree) {
    const Pyramid pyramid = pyramidOf({400, 300}, {31, 31});
    EXPECT_EQ(pyramid.kernelSides, (std::vector<int>{31, 15, 7, 3}));
    EXPECT_EQ(pyramid.images, (std::vector<cv::Size>{{400, 300}, {200, 150}, {100, 75}, {50, 38}}));
    EXPECT_EQ(pyramidOf({400, 300}, {29, 29}).kernelSides, (std::vector<int>{29, 15, 7, 3}));
    EXPECT_EQ(pyramidOf({400, 300}, {5, 5}).kernelSides, (std::vector<int>{5, 3}));
    EXPECT_EQ(pyramidOf({400, 300}, {11, 11}).kernelSides, (std::vector<int>{11, 5, 3}));
    // Each half is truncated before the next: 4 has no coarser level, although half of it is 2.
    EXPECT_EQ(pyramidOf({400, 300}, {4, 4}).kernelSides, (std::vector<int>{4}));
    EXPECT_EQ(pyramidOf({400, 300}, {8, 8}).kernelSides, (std::vector<int>{8, 3}));
}

TEST(BuildPyramid, KernelsOfAtMostThreePixelsHaveOneLevel) {
    for (const int side : {1, 2, 3}) {
        EXPECT_EQ(pyramidOf({100, 100}, {side, side}).kernelSides, std::vector<int>{side});
    }
}

TEST(BuildPyramid, LargerSideOfANonSquareKernelDecidesTheLevels) {
    EXPECT_EQ(pyramidOf({400, 400}, {3, 15}).kernelSides, (std::vector<int>{15, 7, 3}));
    EXPECT_EQ(pyramidOf({400, 400}, {15, 1}).kernelSides, (std::vector<int>{15, 7, 3}));
}

TEST(BuildPyramid, FirstImageBelowThirtyTwoPixelsIsTheCoarsest) {
    EXPECT_EQ(pyramidOf({128, 128}, {63, 63}).images,
              (std::vector<cv::Size>{{128, 128}, {64, 64}, {32, 32}, {16, 16}}));
    EXPECT_EQ(pyramidOf({500, 62}, {63, 63}).images, (std::vector<cv::Size>{{500, 62}, {250, 31}}));
    EXPECT_EQ(pyramidOf({61, 500}, {63, 63}).images.size(), 2u);
    EXPECT_EQ(pyramidOf({1, 1}, {63, 63}).images, (std::vector<cv::Size>{{1, 1}, {1, 1}}));
}

TEST(BuildPyramid, LevelsNeverOutgrowTheirRoom) {
    EXPECT_EQ(pyramidOf({9000, 4100}, {511, 1}).kernelSides,
              (std::vector<int>{511, 255, 127, 63, 31, 15, 7, 3}));
    EXPECT_EQ(pyramidOf({9000, 4100}, {1023, 1}).kernelSides,
              (std::vector<int>{1023, 511, 255, 127, 63, 31, 15, 7}));
}

TEST(BuildPyramid, ImagesAreHalvedByTheFiveByFiveBinomialFilter) {
    // A point of 240 has the weight 6 * 6 of 256 on its own sample and 6 * 1 or 1 * 1 two away.
    cv::Mat point = cv::Mat::zeros(64, 64, CV_8UC1);
    point.at<unsigned char>(20, 30) = 240;
    std::array<cv::Mat, 8> images{point};
    std::array<cv::Mat, 8> kernels{cv::Mat(5, 5, CV_32FC1, cv::Scalar(0))};
    ASSERT_EQ(vel::buildPyramid(images, kernels), 1);
    const auto half = [&](int y, int x) { return images[1].at<unsigned char>(y, x); };
    EXPECT_EQ(half(10, 15), 34); // 33.75
    EXPECT_EQ(half(10, 16), 6);  // 5.625
    EXPECT_EQ(half(11, 16), 1);  // 0.9375
    EXPECT_EQ(half(10, 17), 0);
}

} // namespace
