#include "velimproclib/veldeblurcv/kernels/createMotionKernel.h"

#include "tests/support/Digest.h"
#include "tests/support/sameBits.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <span>

namespace {

using vel::createMotionKernel;
using vel::test::sameBits;

using Kernel = cv::Mat_<float>;

/// Lengths and angles of all quadrants, including angles outside of 0..180 degrees.
template <class Check>
void forEachLine(Check&& check) {
    for (float length = 0.5f; length < 33.0f; length += 1.37f) {
        for (float angle = -200.0f; angle < 400.0f; angle += 23.5f) {
            check(length, angle);
        }
    }
}

TEST(MotionKernel, WeightsFallToZeroOnePixelFromTheLine) {
    forEachLine([](float length, float angle) {
        const Kernel kernel = createMotionKernel(length, angle);
        const cv::Point centre(kernel.cols / 2, kernel.rows / 2);
        const double half = (std::max(length, 1.0f) - 1.0) / 2;
        const double cosine = std::cos(angle * std::numbers::pi / 180);
        const double sine = std::sin(angle * std::numbers::pi / 180);
        for (int row = 0; row < kernel.rows; ++row) {
            for (int column = 0; column < kernel.cols; ++column) {
                const double x = column - centre.x;
                const double y = centre.y - row; // upwards
                const double along = std::abs(x * cosine + y * sine);
                const double beside = y * cosine - x * sine;
                const double distance = std::hypot(beside, std::max(along - half, 0.0));
                // Beside the very end, the rule measures to the end point instead of the line.
                const bool nearEnd = std::hypot(x, y) > half - 1e-3 && along < half + 1e-3;
                EXPECT_NEAR(kernel(row, column) / kernel(centre), std::max(0.0, 1.0 - distance),
                            nearEnd ? 0.03 : 2e-5)
                    << length << " at " << angle << ": " << x << ',' << y;
            }
        }
    });
}

TEST(MotionKernel, SumsToOneAndIsSymmetricAboutItsCentre) {
    forEachLine([](float length, float angle) {
        const Kernel kernel = createMotionKernel(length, angle);
        cv::Mat turned;
        cv::flip(kernel, turned, -1);
        EXPECT_TRUE(sameBits(kernel, turned)) << length << " at " << angle;
        EXPECT_NEAR(cv::sum(kernel)[0], 1.0, 1e-5) << length << " at " << angle;
    });
}

TEST(MotionKernel, KernelsKeepTheirBits) {
    vel::test::Digest digest;
    forEachLine([&](float length, float angle) {
        const Kernel kernel = createMotionKernel(length, angle);
        digest.add(std::span<const float>(kernel.ptr<float>(), kernel.total()));
    });
    EXPECT_EQ(digest.text(), "10B7A25A9F1EB701");
}

TEST(MotionKernel, LengthFiveAlongTheRowsIsARowOfFifths) {
    const cv::Mat kernel = createMotionKernel(5.0f, 0.0f);
    ASSERT_EQ(kernel.size(), cv::Size(5, 1));
    for (int x = 0; x < 5; ++x) {
        EXPECT_FLOAT_EQ(kernel.at<float>(0, x), 0.2f);
    }
}

TEST(MotionKernel, EvenLengthIsCentredByHalfWeightEnds) {
    const cv::Mat kernel = createMotionKernel(4.0f, 0.0f);
    ASSERT_EQ(kernel.size(), cv::Size(5, 1));
    const float expected[] = {0.125f, 0.25f, 0.25f, 0.25f, 0.125f};
    for (int x = 0; x < 5; ++x) {
        EXPECT_FLOAT_EQ(kernel.at<float>(0, x), expected[x]);
    }
}

TEST(MotionKernel, LengthBelowOneBehavesAsOne) {
    const cv::Mat kernel = createMotionKernel(0.3f, 30.0f);
    ASSERT_TRUE(sameBits(kernel, createMotionKernel(1.0f, 30.0f)));
    ASSERT_EQ(kernel.size(), cv::Size(1, 1));
    EXPECT_EQ(kernel.at<float>(0, 0), 1.0f);
}

TEST(MotionKernel, LengthBelowOneAtANegativeCosineIsThreeWideWithEmptyEnds) {
    const cv::Mat kernel = createMotionKernel(0.5f, 120.0f);
    ASSERT_EQ(kernel.size(), cv::Size(3, 1));
    EXPECT_NEAR(kernel.at<float>(0, 0), 0.0, 1e-6);
    EXPECT_NEAR(kernel.at<float>(0, 1), 1.0, 1e-6);
    EXPECT_NEAR(kernel.at<float>(0, 2), 0.0, 1e-6);
}

TEST(MotionKernel, AnglesOneHalfTurnApartGiveTheSameKernel) {
    for (const float angle : {0.0f, 17.0f, 45.0f, 90.0f, 135.0f, 179.0f}) {
        EXPECT_TRUE(
            sameBits(createMotionKernel(9.0f, angle), createMotionKernel(9.0f, angle + 180.0f)));
    }
    EXPECT_TRUE(sameBits(createMotionKernel(9.0f, -45.0f), createMotionKernel(9.0f, 135.0f)));
}

TEST(MotionKernel, NinetyDegreesFollowsTheSignOfItsTinyCosine) {
    const cv::Mat kernel = createMotionKernel(5.0f, 90.0f);
    ASSERT_EQ(kernel.size(), cv::Size(3, 5));
    for (int y = 0; y < 5; ++y) {
        EXPECT_NEAR(kernel.at<float>(y, 0), 0.0, 1e-5);
        EXPECT_NEAR(kernel.at<float>(y, 1), 0.2, 1e-5);
        EXPECT_NEAR(kernel.at<float>(y, 2), 0.0, 1e-5);
    }
}

TEST(MotionKernel, PositiveAnglesRiseToTheRightOnTheScreen) {
    const cv::Mat rising = createMotionKernel(9.0f, 45.0f);
    const cv::Mat falling = createMotionKernel(9.0f, 135.0f);
    const int last = rising.rows - 1;
    ASSERT_EQ(rising.rows, rising.cols);
    EXPECT_GT(rising.at<float>(1, last - 1), 0.05f);
    EXPECT_EQ(rising.at<float>(1, 1), 0.0f);
    EXPECT_GT(falling.at<float>(1, 1), 0.05f);
    EXPECT_EQ(falling.at<float>(1, falling.cols - 2), 0.0f);
}

TEST(MotionKernel, DegenerateArgumentsGiveASmallKernelOrAFailure) {
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float angle : {infinity, -infinity, std::nanf("")}) {
        const cv::Mat kernel = createMotionKernel(7.0f, angle);
        EXPECT_EQ(kernel.size(), cv::Size(1, 1));
        EXPECT_TRUE(std::isnan(kernel.at<float>(0, 0)));
    }
    EXPECT_NEAR(cv::sum(createMotionKernel(7.0f, 3e12f))[0], 1.0, 1e-5);
    EXPECT_NEAR(cv::sum(createMotionKernel(7.0f, -3e12f))[0], 1.0, 1e-5);
    EXPECT_EQ(createMotionKernel(std::nanf(""), 0.0f).at<float>(0, 0), 1.0f);
    EXPECT_EQ(createMotionKernel(infinity, 0.0f).size(), cv::Size(1, 1));
    EXPECT_ANY_THROW(createMotionKernel(3e9f, 10.0f));
}

} // namespace
