#include "velimproclib/veldeblurcv/kernels/createDiscKernel.h"

#include "tests/support/Digest.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <span>

namespace {

using vel::createDiscKernel;
using Kernel = cv::Mat_<float>;

/// Share of the pixel (x, y) that a disc covers, by counting a grid of points.
double coverage(int x, int y, double radius) {
    constexpr int kPoints = 48;
    int inside = 0;
    for (int i = 0; i < kPoints; ++i) {
        for (int j = 0; j < kPoints; ++j) {
            const double dx = x - 0.5 + (i + 0.5) / kPoints;
            const double dy = y - 0.5 + (j + 0.5) / kPoints;
            inside += dx * dx + dy * dy < radius * radius ? 1 : 0;
        }
    }
    return static_cast<double>(inside) / (kPoints * kPoints);
}

TEST(DiscKernel, ElementsAreTheSharesThatTheDiscCovers) {
    for (const float radius : {1.6f, 2.0f, 2.71f, 3.45f, 5.5f, 7.15f, 9.37f}) {
        const Kernel kernel = createDiscKernel(radius);
        const int ring = kernel.rows / 2;
        const double covered = kernel(ring, ring); // the disc covers the whole centre
        for (int y = -ring; y <= ring; ++y) {
            for (int x = -ring; x <= ring; ++x) {
                EXPECT_NEAR(kernel(y + ring, x + ring) / covered, coverage(x, y, radius), 5e-3)
                    << "radius " << radius << " at " << x << ',' << y;
            }
        }
    }
}

TEST(DiscKernel, IsSymmetricInAllEightDirections) {
    for (const float radius : {0.6f, 1.0f, 2.3f, 8.51f}) {
        const Kernel kernel = createDiscKernel(radius);
        cv::Mat transposed;
        cv::Mat mirrored;
        cv::transpose(kernel, transposed);
        cv::flip(kernel, mirrored, 1);
        EXPECT_EQ(cv::countNonZero(kernel != transposed), 0) << radius;
        EXPECT_EQ(cv::countNonZero(kernel != mirrored), 0) << radius;
    }
}

TEST(DiscKernel, KernelsKeepTheirBits) {
    vel::test::Digest digest;
    for (int step = 1; step <= 320; ++step) {
        const Kernel kernel = createDiscKernel(0.031f * static_cast<float>(step));
        digest.add(std::span<const float>(kernel.ptr<float>(), kernel.total()));
    }
    EXPECT_EQ(digest.text(), "AA42EE394D79BA14");
}

TEST(DiscKernel, RadiusZeroGivesASingleNaN) {
    const cv::Mat kernel = createDiscKernel(0.0f);
    ASSERT_EQ(kernel.size(), cv::Size(1, 1));
    EXPECT_TRUE(std::isnan(kernel.at<float>(0, 0)));
}

TEST(DiscKernel, RadiusOneHalfGivesOnlyTheCentreOfThreeByThree) {
    const cv::Mat kernel = createDiscKernel(0.5f);
    ASSERT_EQ(kernel.size(), cv::Size(3, 3));
    EXPECT_EQ(kernel.at<float>(1, 1), 1.0f);
    EXPECT_EQ(cv::countNonZero(kernel), 1);
}

TEST(DiscKernel, RadiusOneHasTheKnownShares) {
    const cv::Mat kernel = createDiscKernel(1.0f);
    ASSERT_EQ(kernel.size(), cv::Size(3, 3));
    EXPECT_NEAR(kernel.at<float>(1, 1), 0.31831, 1e-5);
    EXPECT_NEAR(kernel.at<float>(0, 1), 0.14534, 1e-5);
    EXPECT_NEAR(kernel.at<float>(0, 0), 0.02508, 1e-5);
}

TEST(DiscKernel, RadiusOneAndAHalfKeepsAnOuterRingOfZeros) {
    const cv::Mat kernel = createDiscKernel(1.5f);
    ASSERT_EQ(kernel.size(), cv::Size(5, 5));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(kernel.at<float>(0, i), 0.0f);
        EXPECT_EQ(kernel.at<float>(4, i), 0.0f);
        EXPECT_EQ(kernel.at<float>(i, 0), 0.0f);
        EXPECT_EQ(kernel.at<float>(i, 4), 0.0f);
    }
    EXPECT_GT(kernel.at<float>(1, 1), 0.0f);
}

TEST(DiscKernel, WithOneRingTheCentreLosesTheTipFourTimes) {
    const double radius = 0.6f;
    const cv::Mat kernel = createDiscKernel(0.6f);
    ASSERT_EQ(kernel.size(), cv::Size(3, 3));
    // Area of the disc beyond the line x = 0.5.
    const double tip =
        radius * radius * std::acos(0.5 / radius) - 0.5 * std::sqrt(radius * radius - 0.25);
    const double centre = 3.141592 * radius * radius - 4.0 * tip;
    EXPECT_NEAR(kernel.at<float>(1, 1), centre / (centre + 4.0 * tip), 1e-5);
    EXPECT_NEAR(kernel.at<float>(0, 1), tip / (centre + 4.0 * tip), 1e-5);
}

TEST(DiscKernel, SumsToOneWithinRounding) {
    for (const float radius : {0.7f, 2.0f, 5.0f, 12.3f, 40.0f}) {
        EXPECT_NEAR(cv::sum(createDiscKernel(radius))[0], 1.0, 1e-5);
    }
}

TEST(DiscKernel, DegenerateRadiiGiveASmallKernelOrAFailure) {
    EXPECT_EQ(createDiscKernel(std::nanf("")).size(), cv::Size(1, 1));
    EXPECT_EQ(createDiscKernel(-1.0f).at<float>(0, 0), 1.0f);
    EXPECT_ANY_THROW(createDiscKernel(-5.0f));
    EXPECT_ANY_THROW(createDiscKernel(std::numeric_limits<float>::infinity()));
}

} // namespace
