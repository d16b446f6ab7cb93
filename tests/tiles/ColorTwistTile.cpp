#include "velimproclib/tiles/ColorTwistTile.h"

#include "tests/support/Threads.h"

#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using vel::lumaChromaToRgb;
using vel::rgbToLumaChroma;
using vel::TilePlanes;

TilePlanes constant(float red, float green, float blue) {
    return {cv::Mat(3, 5, CV_32FC1, cv::Scalar(red)), cv::Mat(3, 5, CV_32FC1, cv::Scalar(green)),
            cv::Mat(3, 5, CV_32FC1, cv::Scalar(blue))};
}

TilePlanes noise(int rows, int columns) {
    std::mt19937 random(21);
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    TilePlanes planes;
    for (cv::Mat& plane : planes) {
        plane.create(rows, columns, CV_32FC1);
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < columns; ++x) {
                plane.at<float>(y, x) = value(random);
            }
        }
    }
    return planes;
}

TilePlanes copyOf(const TilePlanes& planes) {
    return {planes[0].clone(), planes[1].clone(), planes[2].clone()};
}

bool samePlanes(const TilePlanes& a, const TilePlanes& b) {
    return cv::countNonZero(a[0] != b[0]) + cv::countNonZero(a[1] != b[1]) +
               cv::countNonZero(a[2] != b[2]) ==
           0;
}

/// Each plane becomes a row of the matrix: sums in single precision from left to right.
void expectTwisted(const TilePlanes& before, const TilePlanes& after, const float (&matrix)[3][4]) {
    for (std::size_t r = 0; r < 3; ++r) {
        for (int y = 0; y < before[0].rows; ++y) {
            for (int x = 0; x < before[0].cols; ++x) {
                const float expected = matrix[r][0] * before[0].at<float>(y, x) +
                                       matrix[r][1] * before[1].at<float>(y, x) +
                                       matrix[r][2] * before[2].at<float>(y, x) + matrix[r][3];
                ASSERT_EQ(after[r].at<float>(y, x), expected) << r;
            }
        }
    }
}

TEST(ColorTwistTile, GreyGivesItsLuminanceAndTheOffsets) {
    for (const float grey : {0.0F, 0.1F, 0.5F, 1.0F, 1.9F}) {
        TilePlanes planes = constant(grey, grey, grey);
        rgbToLumaChroma(planes, 0);
        EXPECT_NEAR(planes[0].at<float>(1, 1), grey, 2e-7F * (1 + grey));
        EXPECT_NEAR(planes[1].at<float>(1, 1), 0.61176F, 1e-6F);
        EXPECT_NEAR(planes[2].at<float>(1, 1), 0.53725F, 3e-6F);
    }
}

TEST(ColorTwistTile, ForwardMatrixSumsInSinglePrecision) {
    const TilePlanes before = noise(37, 41);
    TilePlanes after = copyOf(before);
    rgbToLumaChroma(after, 0);
    expectTwisted(before, after,
                  {{0.299F, 0.587F, 0.114F, 0.0F},
                   {-0.13062F, -0.25644F, 0.38706F, 0.61176F},
                   {0.37288F, -0.31224F, -0.060639F, 0.53725F}});
}

TEST(ColorTwistTile, InverseMatrixKeepsItsOddConstant) {
    const TilePlanes before = noise(37, 41);
    TilePlanes after = copyOf(before);
    lumaChromaToRgb(after, 0);
    expectTwisted(before, after,
                  {{1.0F, 0.0F, 1.88F, -1.01002991F},
                   {1.0F, -0.4446F, -0.9576F, 0.7864285F},
                   {1.0F, 2.289F, 0.0F, -1.4003187F}});
    TilePlanes zero = constant(0, 0, 0);
    lumaChromaToRgb(zero, 0);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(zero[0].at<float>(0, 0)), 0xBF8148A9U);
}

TEST(ColorTwistTile, SecondPairIsRoundedAndHasNoOffsets) {
    const TilePlanes before = noise(20, 23);
    TilePlanes after = copyOf(before);
    rgbToLumaChroma(after, 1);
    expectTwisted(before, after,
                  {{0.299F, 0.587F, 0.114F, 0.0F},
                   {-0.1306F, -0.2564F, 0.3871F, 0.0F},
                   {0.3729F, -0.3122F, -0.0606F, 0.0F}});
    TilePlanes back = copyOf(before);
    lumaChromaToRgb(back, 255);
    expectTwisted(
        before, back,
        {{1.0F, 0.0F, 1.88F, 0.0F}, {1.0F, -0.4446F, -0.9576F, 0.0F}, {1.0F, 2.289F, 0.0F, 0.0F}});
}

TEST(ColorTwistTile, TwistingBackReturnsTheColours) {
    const TilePlanes before = noise(64, 64);
    TilePlanes planes = copyOf(before);
    rgbToLumaChroma(planes, 0);
    lumaChromaToRgb(planes, 0);
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_LT(cv::norm(planes[c], before[c], cv::NORM_INF), 5e-5);
    }
}

TEST(ColorTwistTile, ResultDoesNotDependOnTheNumberOfThreads) {
    const TilePlanes before = noise(203, 190);
    TilePlanes expected = copyOf(before);
    rgbToLumaChroma(expected, 0);
    vel::test::forThreadCounts([&] {
        TilePlanes planes = copyOf(before);
        rgbToLumaChroma(planes, 0);
        EXPECT_TRUE(samePlanes(planes, expected));
    });
}

} // namespace
