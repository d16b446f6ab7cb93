#include "velimproclib/veldeblurcv/detail/enhanceHalf.h"

#include "tests/support/EachTarget.h"
#include "tests/support/EnhancedHalf.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <random>

namespace vel {
namespace {

using test::enhancedHalf;
using test::sameBits;

/// A step with texture on both sides.
cv::Mat_<float> picture(int width, int height, float texture = 0.05f) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(-texture, texture);
    cv::Mat_<float> plane(height, width);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            plane(y, x) = (x < width / 2 ? 0.3f : 0.7f) + noise(random);
        }
    }
    return plane;
}

cv::Mat_<float> baseOf(const cv::Mat_<float>& half) {
    cv::Mat planes[3] = {half.clone(), half.clone(), half.clone()};
    const auto over = [](cv::Mat& plane) {
        return GIMG<float>(plane.cols, plane.rows, plane.data, static_cast<int>(plane.step));
    };
    auto rhs = over(planes[0]);
    auto io = over(planes[1]);
    auto guide = over(planes[2]);
    CEdgeSmoother smoother;
    smoother.smooth(rhs, io, guide, 0.05f, 1.2f, true, 20);
    return planes[1];
}

double spread(const cv::Mat& plane) {
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(plane, mean, deviation);
    return deviation[0];
}

TEST(EnhanceHalf, AddsTheCurvedDetailToTheBaseLayer) {
    for (const cv::Size size :
         {cv::Size(1, 1), cv::Size(31, 1), cv::Size(1, 31), cv::Size(64, 56)}) {
        const cv::Mat_<float> half = picture(size.width, size.height);
        const cv::Mat_<float> base = baseOf(half);
        cv::Mat detail = half - base;
        GIMG<float> image(detail.cols, detail.rows, detail.data, static_cast<int>(detail.step));
        CDetailCurve curve;
        curve.apply(image, 0.3f, 0.5f, 0.18f, -0.5f, 0.5f, 3.0f);
        EXPECT_TRUE(sameBits(enhancedHalf(half, 0.5f, 0.3f), base + detail)) << size;
    }
}

TEST(EnhanceHalf, GainStrengthensTextureAndKeepsTheMean) {
    const cv::Mat_<float> half = picture(96, 64, 0.02f);
    const cv::Mat_<float> result = enhancedHalf(half, 0.5f, 0.0f);
    const cv::Rect left(8, 8, 32, 48);
    EXPECT_GT(spread(result(left)), 2.0 * spread(half(left)));
    EXPECT_LT(spread(result(left)), 2.6 * spread(half(left)));
    EXPECT_NEAR(cv::mean(result(left))[0], cv::mean(half(left))[0], 2e-3);
}

TEST(EnhanceHalf, GainNearMinusOneLeavesTheBaseLayer) {
    const cv::Mat_<float> half = picture(40, 30);
    EXPECT_TRUE(sameBits(enhancedHalf(half, -0.995f, 0.5f), baseOf(half)));
}

TEST(EnhanceHalf, SettingsNearZeroReturnTheHalf) {
    const cv::Mat_<float> half = picture(40, 30);
    EXPECT_LE(cv::norm(enhancedHalf(half, 0.0f, 0.0f), half, cv::NORM_INF), 1e-7);
}

TEST(EnhanceHalf, CutsTheInputButNotTheSum) {
    cv::Mat_<float> half = picture(60, 50, 0.45f);
    half(10, 10) = 3.0f;
    half(20, 20) = -2.0f;
    cv::Mat_<float> cut = half.clone();
    cut = cv::max(cv::min(cut, 1.0f), 0.0f);
    const cv::Mat_<float> result = enhancedHalf(half, 1.0f, 0.0f);
    EXPECT_TRUE(sameBits(result, enhancedHalf(cut, 1.0f, 0.0f)));
    double low = 0;
    double high = 0;
    cv::minMaxLoc(result, &low, &high);
    EXPECT_LT(low, -0.1);
    EXPECT_GT(high, 1.1);
}

TEST(EnhanceHalf, ScratchMayBeLargerThanTheHalf) {
    const cv::Mat_<float> half = picture(40, 30);
    EXPECT_TRUE(sameBits(enhancedHalf(half, 0.5f, 0.3f), enhancedHalf(half, 0.5f, 0.3f, 9)));
}

TEST(EnhanceHalf, HalfMayBeAViewOfALargerPlane) {
    const cv::Mat_<float> half = picture(40, 30);
    cv::Mat large(50, 61, CV_32FC1, cv::Scalar(7));
    cv::Mat view = large(cv::Rect(5, 6, 40, 30));
    half.copyTo(view);
    IMG<float, 1> detail(40, 30);
    IMG<float, 1> guide(40, 30);
    CEdgeSmoother smoother;
    CDetailCurve curve;
    enhanceHalf(view, detail, guide, smoother, curve, 0.5f, 0.3f);
    EXPECT_TRUE(sameBits(view.clone(), enhancedHalf(half, 0.5f, 0.3f)));
    view.setTo(7);
    EXPECT_EQ(cv::countNonZero(large != 7), 0);
}

TEST(EnhanceHalf, SameBitsOnEveryVariantAndForEveryThreadCount) {
    const cv::Mat_<float> half = picture(70, 61);
    const cv::Mat_<float> expected = enhancedHalf(half, 0.5f, 0.3f);
    test::forEachTarget([&] { EXPECT_TRUE(sameBits(enhancedHalf(half, 0.5f, 0.3f), expected)); });
    test::forThreadCounts([&] { EXPECT_TRUE(sameBits(enhancedHalf(half, 0.5f, 0.3f), expected)); });
}

/// Enhances `half` inside a frame of canaries and checks the frame.
cv::Mat_<float> enhancedInFrame(const cv::Mat_<float>& half, float gain, float gamma) {
    cv::Mat_<float> large(half.rows + 4, half.cols + 4, 7.0f);
    cv::Mat view = large(cv::Rect(2, 2, half.cols, half.rows));
    half.copyTo(view);
    IMG<float, 1> detail(half.cols, half.rows);
    IMG<float, 1> guide(half.cols, half.rows);
    CEdgeSmoother smoother;
    CDetailCurve curve;
    enhanceHalf(view, detail, guide, smoother, curve, gain, gamma);
    const cv::Mat_<float> result = view.clone();
    view.setTo(7);
    EXPECT_EQ(cv::countNonZero(large != 7), 0);
    return result;
}

TEST(EnhanceHalf, InfinitePixelsAreCutAndNaNSpreads) {
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float odd : {infinity, -infinity}) {
        cv::Mat_<float> half = picture(40, 30);
        half(3, 4) = odd;
        cv::Mat_<float> cut = half.clone();
        cut(3, 4) = odd > 0 ? 1.0f : 0.0f;
        EXPECT_TRUE(sameBits(enhancedInFrame(half, 0.5f, 0.3f), enhancedInFrame(cut, 0.5f, 0.3f)));
    }
    cv::Mat_<float> half = picture(40, 30);
    half(3, 4) = std::nanf("");
    EXPECT_TRUE(std::isnan(enhancedInFrame(half, 0.5f, 0.3f)(25, 35)));
}

TEST(EnhanceHalf, SettingsThatAreNotFiniteWriteNothingOutsideOfTheHalf) {
    const cv::Mat_<float> half = picture(40, 30);
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float odd : {std::nanf(""), infinity, -infinity}) {
        enhancedInFrame(half, odd, 0.3f);
        enhancedInFrame(half, 0.5f, odd);
    }
    EXPECT_TRUE(sameBits(enhancedInFrame(half, -infinity, 0.3f), baseOf(half)));
    EXPECT_TRUE(
        sameBits(enhancedInFrame(half, 0.5f, std::nanf("")), enhancedInFrame(half, 0.5f, 0.0f)))
        << "a gamma of NaN is no power";
}

} // namespace
} // namespace vel
