#include "velimproclib/veldeblurcv/estimation/levels/alphaBlend.h"

#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>
#include <random>
#include <string>

namespace vel {
namespace {

using test::forEachTarget;
using test::forThreadCounts;
using test::sameBits;

cv::Mat_<std::uint8_t> byteNoise(int rows, int cols, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> pixel(0, 255);
    cv::Mat_<std::uint8_t> plane(rows, cols);
    for (auto& value : plane) {
        value = static_cast<std::uint8_t>(pixel(random));
    }
    return plane;
}

cv::Mat_<float> floatNoise(int rows, int cols, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> pixel(-2.0f, 2.0f);
    cv::Mat_<float> plane(rows, cols);
    for (auto& value : plane) {
        value = pixel(random);
    }
    return plane;
}

float blended(float src, float dst, float alpha) {
    const auto share = static_cast<float>(src * alpha);
    return static_cast<float>(double{share} + double{dst} * (1.0 - double{alpha}));
}

std::uint8_t blended(std::uint8_t src, std::uint8_t dst, float alpha) {
    const auto share = static_cast<float>(src * alpha);
    return static_cast<std::uint8_t>(std::trunc(double{share} + dst * (1.0 - double{alpha})));
}

template <class T>
void expectDefinition(const cv::Mat_<T>& src, const cv::Mat_<T>& dst, float alpha) {
    cv::Mat_<T> expected = dst.clone();
    for (int y = 0; y < src.rows; ++y) {
        for (int x = 0; x < src.cols; ++x) {
            expected(y, x) = blended(src(y, x), dst(y, x), alpha);
        }
    }
    forEachTarget([&] {
        cv::Mat_<T> result = dst.clone();
        alphaBlend(src, result, alpha);
        EXPECT_TRUE(sameBits(expected, result)) << src.size() << " alpha " << alpha;
    });
}

TEST(AlphaBlend, EqualsTheDefinitionOnEveryVariant) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> side(1, 67);
    for (const float alpha : {0.0f, 0.1f, 0.3f, 0.49975f, 0.5f, 0.999f, 1.0f}) {
        const int rows = side(random);
        const int cols = side(random);
        expectDefinition(byteNoise(rows, cols, 1), byteNoise(rows, cols, 2), alpha);
        expectDefinition(floatNoise(rows, cols, 3), floatNoise(rows, cols, 4), alpha);
    }
    expectDefinition(byteNoise(3, 1000, 1), byteNoise(3, 1000, 2), 0.7f);
    expectDefinition(floatNoise(3, 1000, 1), floatNoise(3, 1000, 2), 0.7f);
}

TEST(AlphaBlend, EqualsTheDefinitionForEveryThreadCount) {
    forThreadCounts([] { expectDefinition(floatNoise(37, 20, 3), floatNoise(37, 20, 4), 0.3f); });
}

TEST(AlphaBlend, PixelsBesideAPartOfALargerImageKeepTheirValues) {
    const cv::Mat_<float> src = floatNoise(9, 20, 5);
    cv::Mat_<float> dst = floatNoise(9, 20, 6);
    const cv::Mat_<float> before = dst.clone();
    const cv::Mat from = src.colRange(2, 9);
    cv::Mat to = dst.colRange(5, 12);
    alphaBlend(from, to, 0.25f);
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 20; ++x) {
            EXPECT_EQ(x >= 5 && x < 12 ? blended(src(y, x - 3), before(y, x), 0.25f) : before(y, x),
                      dst(y, x));
        }
    }
}

TEST(AlphaBlend, AlphaOfZeroLeavesTheTargetAndAlphaBeyondOneCopiesTheSource) {
    for (const float low : {0.0f, -0.5f, -std::numeric_limits<float>::infinity()}) {
        cv::Mat_<float> dst = floatNoise(7, 9, 2);
        const cv::Mat_<float> before = dst.clone();
        alphaBlend(floatNoise(7, 9, 1), dst, low);
        EXPECT_TRUE(sameBits(before, dst));
    }
    for (const float high : {1.0f, 1.5f, std::numeric_limits<float>::infinity()}) {
        cv::Mat_<float> dst = floatNoise(7, 9, 2);
        alphaBlend(floatNoise(7, 9, 1), dst, high);
        EXPECT_TRUE(sameBits(floatNoise(7, 9, 1), dst));
        cv::Mat_<std::uint8_t> bytes = byteNoise(7, 9, 2);
        alphaBlend(byteNoise(7, 9, 1), bytes, high);
        EXPECT_TRUE(sameBits(byteNoise(7, 9, 1), bytes));
    }
}

TEST(AlphaBlend, TheByteFormTruncates) {
    const cv::Mat src(2, 2, CV_8UC1, cv::Scalar(100));
    cv::Mat dst(2, 2, CV_8UC1, cv::Scalar(101));
    alphaBlend(src, dst, 0.5f);
    EXPECT_EQ(100, dst.at<std::uint8_t>(1, 1));
}

TEST(AlphaBlend, AlphaThatIsNotANumberGivesZeroBytesAndNaNFloats) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    forEachTarget([&] {
        cv::Mat_<std::uint8_t> bytes = byteNoise(3, 70, 2);
        alphaBlend(byteNoise(3, 70, 1), bytes, nan);
        EXPECT_EQ(0, cv::countNonZero(bytes));
        cv::Mat_<float> floats = floatNoise(3, 70, 2);
        alphaBlend(floatNoise(3, 70, 1), floats, nan);
        for (const float value : floats) {
            EXPECT_TRUE(std::isnan(value));
        }
    });
}

TEST(AlphaBlend, OtherTypesAreRefused) {
    for (const int type : {CV_16UC1, CV_16SC1, CV_8UC3, CV_64FC1, CV_32FC3}) {
        const cv::Mat src(3, 3, type, cv::Scalar::all(1));
        cv::Mat dst(3, 3, type, cv::Scalar::all(2));
        try {
            alphaBlend(src, dst, 0.5f);
            FAIL() << "type " << type;
        } catch (const char* text) {
            EXPECT_STREQ("alphaBlend - image type not supported", text);
        }
        EXPECT_EQ(9 * dst.channels() * 2, cv::sum(cv::sum(dst))[0]);
    }
}

TEST(AlphaBlend, OneBytePlaneMakesBothPlanesBytes) {
    const cv::Mat_<std::uint8_t> src = byteNoise(4, 8, 1);
    cv::Mat_<float> dst = floatNoise(4, 8, 2);
    const cv::Mat_<float> before = dst.clone();
    alphaBlend(src, dst, 0.5f);
    for (int y = 0; y < 4; ++y) {
        const auto* was = before.ptr<std::uint8_t>(y);
        const auto* is = dst.ptr<std::uint8_t>(y);
        for (int i = 0; i < 32; ++i) {
            EXPECT_EQ(i < 8 ? blended(src(y, i), was[i], 0.5f) : was[i], is[i]);
        }
    }
}

TEST(AlphaBlend, OneFloatPlaneMakesBothPlanesFloat) {
    const cv::Mat_<float> src = floatNoise(4, 8, 1);
    cv::Mat dst(4, 8, CV_32SC1);
    const cv::Mat_<float> floats = floatNoise(4, 8, 2);
    std::memcpy(dst.data, floats.data, 4 * 8 * sizeof(float));
    alphaBlend(src, dst, 0.5f);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(blended(src(y, x), floats(y, x), 0.5f), dst.ptr<float>(y)[x]);
        }
    }
}

TEST(AlphaBlend, RowOfNarrowerElementsIsNotOverrun) {
    const cv::Mat_<float> src = floatNoise(4, 8, 1);
    cv::Mat wide(4, 16, CV_16UC1, cv::Scalar(0x4321));
    cv::Mat dst = wide.colRange(0, 8);
    alphaBlend(src, dst, 1.0f);
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(src(y, 3), dst.ptr<float>(y)[3]);
        for (int x = 8; x < 16; ++x) {
            EXPECT_EQ(0x4321, wide.at<std::uint16_t>(y, x));
        }
    }
}

} // namespace
} // namespace vel
