#include "velimproclib/veldeblurcv/kernels/DiscKernel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <utility>

namespace {

using vel::createDiscKernel;

float f(double value) {
    return static_cast<float>(value);
}

/// The rule of the shape spelt out cell by cell, in one piece and in another order than the code.
cv::Mat_<float> plainDisc(float radius) {
    const double r = radius;
    const double r2 = r * r;
    const int crad = static_cast<int>(r + 0.5);
    std::map<std::pair<int, int>, double> cells;
    for (int y = -crad; y <= crad; ++y) {
        for (int x = -crad; x <= crad; ++x) {
            const int a = std::max(std::abs(x), std::abs(y));
            const int b = std::min(std::abs(x), std::abs(y));
            const float pp = f((a + 0.5) * (a + 0.5) + (b + 0.5) * (b + 0.5));
            const float mm = f((a - 0.5) * (a - 0.5) + (b - 0.5) * (b - 0.5));
            const float pm = f((a + 0.5) * (a + 0.5) + (b - 0.5) * (b - 0.5));
            const float mp = f((a - 0.5) * (a - 0.5) + (b + 0.5) * (b + 0.5));
            double g = 0.0;
            if ((static_cast<double>(pp) > r2 && static_cast<double>(mm) < r2) ||
                (b == 0 && a - 0.5 < r && r < a + 0.5)) {
                double m1 = b - 0.5;
                if (!(static_cast<double>(pm) > r2)) {
                    const float inside = f(r2 - (a + 0.5) * (a + 0.5));
                    m1 = f(std::sqrt(static_cast<double>(inside)));
                }
                double m2 = b + 0.5;
                if (!(static_cast<double>(mp) < r2)) {
                    const float inside = f(r2 - (a - 0.5) * (a - 0.5));
                    m2 = f(std::sqrt(static_cast<double>(inside)));
                }
                const float a1 = f(std::asin(static_cast<double>(f(m1 / r))));
                const float a2 = f(std::asin(static_cast<double>(f(m2 / r))));
                const float s1 = f(std::sin(static_cast<double>(f(2.0 * a1))));
                const float s2 = f(std::sin(static_cast<double>(f(2.0 * a2))));
                const float t =
                    f(0.25 * (static_cast<double>(s2) - s1) + 0.5 * (static_cast<double>(a2) - a1));
                g = f(r2 * t + ((m1 - b + 0.5) - (a - 0.5) * (m2 - m1)));
            }
            cells[{y, x}] = static_cast<double>(pp) < r2 ? g + 1.0 : g;
        }
    }
    const float middle = f(3.141592 * r * r);
    cells[{0, 0}] = static_cast<double>(middle) < 1.570796 ? middle : f(1.570796);
    if (crad > 0 && crad - 0.5 < r && r2 < (crad - 0.5) * (crad - 0.5) + 0.25) {
        const float m = f(std::sqrt(static_cast<double>(f(r2 - (crad - 0.5) * (crad - 0.5)))));
        const float a = f(std::asin(static_cast<double>(f(m / r))));
        const float sine = f(std::sin(static_cast<double>(f(2.0 * a))));
        const float tip =
            f(2.0 * (r2 * (0.5 * a + 0.25 * static_cast<double>(sine)) - m * (crad - 0.5)));
        const std::pair<int, int> axes[] = {{crad, 0}, {-crad, 0}, {0, crad}, {0, -crad}};
        for (const auto& end : axes) {
            cells[end] = tip;
        }
        const std::pair<int, int> inner[] = {
            {crad - 1, 0}, {1 - crad, 0}, {0, crad - 1}, {0, 1 - crad}};
        for (const auto& cell : inner) {
            cells[cell] -= tip;
        }
    }
    if (cells[{0, 0}] > 1.0) {
        cells[{0, 0}] = 1.0;
    }
    float sum = 0.0f;
    for (const auto& [place, value] : cells) {
        sum = f(sum + value);
    }
    cv::Mat_<float> kernel(2 * crad + 1, 2 * crad + 1);
    for (const auto& [place, value] : cells) {
        kernel(place.first + crad, place.second + crad) = f(value / sum);
    }
    return kernel;
}

TEST(DiscKernel, RadiusZeroGivesASingleNotANumber) {
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

TEST(DiscKernel, MatchesThePlainRuleToTheLastBit) {
    for (int step = 1; step <= 320; ++step) {
        const float radius = 0.031f * static_cast<float>(step);
        const cv::Mat kernel = createDiscKernel(radius);
        const cv::Mat_<float> expected = plainDisc(radius);
        ASSERT_EQ(kernel.size(), expected.size()) << radius;
        for (int y = 0; y < kernel.rows; ++y) {
            for (int x = 0; x < kernel.cols; ++x) {
                ASSERT_EQ(kernel.at<float>(y, x), expected(y, x))
                    << "radius " << radius << " at " << x << "," << y;
            }
        }
    }
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

TEST(DiscKernel, DegenerateRadiiNeitherCrashNorHang) {
    EXPECT_EQ(createDiscKernel(std::nanf("")).size(), cv::Size(1, 1));
    EXPECT_EQ(createDiscKernel(-1.0f).at<float>(0, 0), 1.0f);
    EXPECT_ANY_THROW(createDiscKernel(-5.0f));
    EXPECT_ANY_THROW(createDiscKernel(std::numeric_limits<float>::infinity()));
}

} // namespace
