#include "velimproclib/tiles/imageExtendBorder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace {

/// Every pixel of the margin takes the value of the nearest loaded pixel.
void expectReplicated(int columns, int rows, int left, int top, int right, int bottom) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(-1.0F, 2.0F);
    const int loadedRight = columns - right - 1;
    const int loadedBottom = rows - bottom - 1;
    // A view with canaries left and right of it.
    cv::Mat canvas(rows, columns + 2, CV_32FC1, cv::Scalar(99));
    cv::Mat plane = canvas.colRange(1, columns + 1);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            plane.at<float>(y, x) = value(random);
        }
    }
    const cv::Mat before = plane.clone();
    vel::imageExtendBorder(plane, left, top, right, bottom);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const int fromX = std::clamp(x, left, loadedRight);
            const int fromY = std::clamp(y, top, loadedBottom);
            ASSERT_EQ(plane.at<float>(y, x), before.at<float>(fromY, fromX)) << x << ' ' << y;
        }
        ASSERT_EQ(canvas.at<float>(y, 0), 99.0F);
        ASSERT_EQ(canvas.at<float>(y, columns + 1), 99.0F);
    }
}

TEST(ImageExtendBorder, MarginsTakeTheNearestLoadedPixel) {
    expectReplicated(12, 9, 3, 2, 4, 1);
    expectReplicated(40, 30, 16, 16, 23, 13);
}

TEST(ImageExtendBorder, SinglePixelFillsTheWholePlane) {
    expectReplicated(7, 5, 3, 2, 3, 2);
}

TEST(ImageExtendBorder, MarginsOfZeroLeaveThePlaneAsItIs) {
    expectReplicated(7, 5, 0, 0, 0, 0);
    expectReplicated(7, 5, 0, 3, 2, 0);
    expectReplicated(7, 5, 6, 0, 0, 4);
}

} // namespace
