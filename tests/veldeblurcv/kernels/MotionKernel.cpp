#include "velimproclib/veldeblurcv/kernels/MotionKernel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using vel::createMotionKernel;

float f(double value) {
    return static_cast<float>(value);
}

bool sameElements(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && cv::countNonZero(a != b) == 0;
}

/// The rule of the shape spelt out in one piece.
cv::Mat_<float> plainLine(float lengthArgument, float theta) {
    const double length = std::max(1.0f, lengthArgument);
    const double half = f((length - 1) * 0.5);
    while (theta < 0) {
        theta = f(static_cast<double>(theta) + 180);
    }
    while (theta >= 180) {
        theta = f(static_cast<double>(theta) - 180);
    }
    const float phi = f((static_cast<double>(theta) / 180) * 3.141592);
    const double c = f(std::cos(static_cast<double>(phi)));
    const double s = f(std::sin(static_cast<double>(phi)));
    const int xsign = c >= 0 ? 1 : -1;
    const double eps = std::pow(10.0, -16) * 2;
    const int nx = static_cast<int>(half * c + xsign - length * eps) * xsign + 1;
    const int ny = static_cast<int>(half * s + 1 - length * eps) + 1;
    std::vector<std::vector<float>> d(static_cast<std::size_t>(ny));
    for (int iy = 0; iy < ny; ++iy) {
        for (int ix = 0; ix < nx; ++ix) {
            const double x = ix * xsign;
            const double y = iy;
            float dist = f(y * c - x * s);
            const float rho = f(std::sqrt(static_cast<double>(f(x * x + y * y))));
            if (half <= static_cast<double>(rho) && std::abs(dist) <= 1) {
                const float q = f((x + dist * s) / c);
                const float t = f(half - std::abs(static_cast<double>(q)));
                dist = f(std::sqrt(static_cast<double>(
                    f(static_cast<double>(dist) * dist + static_cast<double>(t) * t))));
            }
            const float weight = f((1 + eps) - std::abs(static_cast<double>(dist)));
            d[static_cast<std::size_t>(iy)].push_back(weight < 0 ? 0 : weight);
        }
    }
    cv::Mat_<float> h(2 * ny - 1, 2 * nx - 1, 0.0f);
    float sum = 0;
    for (int iy = 0; iy < ny; ++iy) {
        for (int ix = 0; ix < nx; ++ix) {
            const float value = d[static_cast<std::size_t>(iy)][static_cast<std::size_t>(ix)];
            h(ny - 1 - iy, nx - 1 - ix) = value;
            sum += value;
        }
    }
    for (int iy = 0; iy < ny; ++iy) {
        for (int ix = 0; ix < nx; ++ix) {
            const float value = d[static_cast<std::size_t>(iy)][static_cast<std::size_t>(ix)];
            h(ny - 1 + iy, nx - 1 + ix) = value;
            sum += value;
        }
    }
    const float divisor = f(eps * length * length + sum - h(ny - 1, nx - 1));
    cv::Mat_<float> out(h.rows, h.cols);
    for (int r = 0; r < h.rows; ++r) {
        for (int x = 0; x < h.cols; ++x) {
            out(r, x) = h(c > 0 ? h.rows - 1 - r : r, x) / divisor;
        }
    }
    return out;
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
    ASSERT_TRUE(sameElements(kernel, createMotionKernel(1.0f, 30.0f)));
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
        EXPECT_TRUE(sameElements(createMotionKernel(9.0f, angle),
                                 createMotionKernel(9.0f, angle + 180.0f)));
    }
    EXPECT_TRUE(sameElements(createMotionKernel(9.0f, -45.0f), createMotionKernel(9.0f, 135.0f)));
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

TEST(MotionKernel, MatchesThePlainRuleToTheLastBit) {
    int cases = 0;
    for (float length = 0.5f; length < 33.0f; length += 1.37f) {
        for (float angle = -200.0f; angle < 400.0f; angle += 23.5f) {
            const cv::Mat kernel = createMotionKernel(length, angle);
            const cv::Mat_<float> expected = plainLine(length, angle);
            ASSERT_TRUE(sameElements(kernel, expected)) << length << " at " << angle;
            ++cases;
        }
    }
    EXPECT_GT(cases, 500);
}

TEST(MotionKernel, DegenerateArgumentsNeitherCrashNorHang) {
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
