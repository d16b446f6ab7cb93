#include "velimproclib/images/copyFrame.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {
namespace {

cv::Mat_<float> numbered(int rows, int cols) {
    cv::Mat_<float> plane(rows, cols);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < cols; ++x) {
            plane(y, x) = static_cast<float>(100 * y + x + 1);
        }
    }
    return plane;
}

void expectFrameOnly(int rows, int cols, int top, int bottom, int left, int right) {
    const cv::Mat_<float> src = numbered(rows, cols);
    cv::Mat wide(rows, cols + 3, CV_32FC1, cv::Scalar(-7));
    cv::Mat dst = wide.colRange(1, cols + 1);
    copyFrame(src, dst, top, bottom, left, right);
    for (int y = 0; y < rows; ++y) {
        EXPECT_EQ(-7.0f, wide.at<float>(y, 0));
        EXPECT_EQ(-7.0f, wide.at<float>(y, cols + 1));
        for (int x = 0; x < cols; ++x) {
            const bool inFrame = y < top || y >= rows - bottom || x < left || x >= cols - right;
            EXPECT_EQ(inFrame ? src(y, x) : -7.0f, dst.at<float>(y, x))
                << rows << 'x' << cols << " at " << y << ',' << x;
        }
    }
}

TEST(CopyFrame, CopiesTheFrameAndNothingElse) {
    for (const int width : {1, 2, 3}) {
        expectFrameOnly(9, 11, width, width, width, width);
    }
    expectFrameOnly(9, 11, 1, 2, 3, 4);
    expectFrameOnly(9, 11, 0, 0, 0, 0);
    expectFrameOnly(9, 11, 0, 0, 2, 0);
}

TEST(CopyFrame, PlanesSmallerThanTheFrameAreCopiedCompletely) {
    for (const int side : {1, 2, 3, 4, 5}) {
        expectFrameOnly(side, side, 3, 3, 3, 3);
        expectFrameOnly(side, 9, 3, 3, 3, 3);
        expectFrameOnly(9, side, 3, 3, 3, 3);
        expectFrameOnly(side, side, 0, 9, -1, 0);
    }
}

TEST(CopyFrame, WorksOnBytes) {
    const cv::Mat src(5, 6, CV_8UC1, cv::Scalar(9));
    cv::Mat dst(5, 6, CV_8UC1, cv::Scalar(1));
    copyFrame(src, dst, 2, 2, 2, 2);
    EXPECT_EQ(5 * 6 * 9 - 2 * 8, cv::sum(dst)[0]);
    EXPECT_EQ(1, dst.at<std::uint8_t>(2, 2));
}

} // namespace
} // namespace vel
