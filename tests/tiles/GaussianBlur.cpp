#include "velimproclib/tiles/GaussianBlur.h"

#include "tests/support/Digest.h"
#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "velimproclib/primitives/base/TeamLoop.h"

#include <cmath>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <random>
#include <span>
#include <vector>

namespace {

using vel::GaussianBlur;
using vel::test::sameBits;

/// Values of 16-bit pixels, from integers, so that every platform makes the same ones.
cv::Mat noise(int rows, int columns, unsigned seed) {
    std::mt19937 random(seed);
    cv::Mat plane(rows, columns, CV_32FC1);
    for (auto value = plane.begin<float>(); value != plane.end<float>(); ++value) {
        *value = static_cast<float>(random() >> 16) / 32768.0F;
    }
    return plane;
}

cv::Mat blurred(const cv::Mat& source, int side) {
    cv::Mat along;
    cv::Mat result;
    GaussianBlur(side, 0.2 * side).blur(source, along, result);
    return result;
}

/// One pixel of the definition. `add(sum, tap, value)` adds the product to the sum.
template <class Add>
float definedPixel(const cv::Mat& source, const std::vector<float>& t, int y, int x,
                   const Add& add) {
    const int reach = static_cast<int>(t.size()) - 1;
    const auto along = [&](int row) {
        float sum = 0;
        for (int k = -reach; k <= reach; ++k) {
            sum = add(sum, t[static_cast<std::size_t>(std::abs(k))],
                      source.at<float>(row, x + reach + k));
        }
        return sum;
    };
    const int centre = y + reach;
    float sum = add(0, t[0], along(centre));
    for (int k = 1; k <= reach; ++k) {
        sum = add(sum, t[static_cast<std::size_t>(k)], along(centre - k) + along(centre + k));
    }
    return sum;
}

float addInTwoRoundings(float sum, float tap, float value) {
    const float product = tap * value;
    return sum + product;
}

TEST(GaussianBlur, TapsAreThoseOfTheMatrixLibraryForEverySide) {
    for (int side = 3; side < 1400; side += 2) {
        const std::vector<float> taps = vel::gaussianHalfTaps(side, 0.2 * side);
        const cv::Mat expected = cv::getGaussianKernel(side, 0.2 * side, CV_32F);
        ASSERT_EQ(taps.size(), static_cast<std::size_t>(side / 2) + 1);
        for (int d = 0; d <= side / 2; ++d) {
            ASSERT_EQ(taps[static_cast<std::size_t>(d)], expected.at<float>(side / 2 + d)) << side;
        }
    }
}

TEST(GaussianBlur, EveryProcessorVariantSumsInTheDefinedOrder) {
    vel::test::forEachTarget([] {
        std::mt19937 random(5);
        for (int run = 0; run < 30; ++run) {
            const int side = 3 + 2 * static_cast<int>(random() % 24);
            const int rows = 1 + static_cast<int>(random() % 5);
            const int columns = 1 + static_cast<int>(random() % 300);
            const cv::Mat source =
                noise(rows + side - 1, columns + side - 1, static_cast<unsigned>(run));
            const cv::Mat result = blurred(source, side);
            ASSERT_EQ(result.size(), cv::Size(columns, rows));
            const std::vector<float> taps = vel::gaussianHalfTaps(side, 0.2 * side);
            for (int y = 0; y < rows; ++y) {
                for (int x = 0; x < columns; ++x) {
                    ASSERT_EQ(result.at<float>(y, x),
                              definedPixel(source, taps, y, x, addInTwoRoundings))
                        << side << ": " << columns << " by " << rows << " at " << x << ", " << y;
                }
            }
        }
    });
}

TEST(GaussianBlur, FusedOperationsWouldGiveOtherBits) {
    const cv::Mat source = noise(20, 80, 3);
    const cv::Mat result = blurred(source, 19);
    const std::vector<float> taps = vel::gaussianHalfTaps(19, 0.2 * 19);
    int moved = 0;
    for (int y = 0; y < result.rows; ++y) {
        for (int x = 0; x < result.cols; ++x) {
            const float fused =
                definedPixel(source, taps, y, x, [](float sum, float tap, float value) {
                    return std::fma(tap, value, sum);
                });
            moved += fused != result.at<float>(y, x) ? 1 : 0;
        }
    }
    EXPECT_GT(moved, result.rows * result.cols / 4);
}

TEST(GaussianBlur, ResultHasTheSameBitsOnEveryPlatform) {
    vel::test::Digest digest;
    for (const int side : {19, 21, 49, 81, 255}) {
        const cv::Mat result = blurred(noise(300, 333, static_cast<unsigned>(side)), side);
        digest.add(std::span<const float>(result.ptr<float>(), result.total()));
    }
    EXPECT_EQ(digest.text(), "BDD659ECB534CC95");
}

TEST(GaussianBlur, FollowsTheMatrixLibraryToTheLastPlaces) {
    const cv::Mat source = noise(90, 120, 8);
    cv::Mat expected;
    source.convertTo(expected, CV_64F);
    cv::GaussianBlur(expected, expected, {25, 25}, 5.0, 5.0);
    const cv::Mat inside = expected(cv::Rect(12, 12, 96, 66));
    EXPECT_LT(cv::norm(blurred(source, 25), cv::Mat_<float>(inside), cv::NORM_INF), 1e-6);
}

TEST(GaussianBlur, NothingAroundTheResultIsWritten) {
    const cv::Mat source = noise(40, 70, 9);
    const cv::Mat expected = blurred(source, 7);
    cv::Mat alongCanvas(42, 66, CV_32FC1, cv::Scalar(9));
    cv::Mat canvas(36, 66, CV_32FC1, cv::Scalar(9));
    cv::Mat along = alongCanvas(cv::Rect(1, 1, 64, 40));
    cv::Mat result = canvas(cv::Rect(1, 1, 64, 34));
    GaussianBlur(7, 1.4).blur(source, along, result);
    EXPECT_TRUE(sameBits(result, expected));
    for (cv::Mat* plane : {&alongCanvas, &canvas}) {
        (*plane)(cv::Rect(1, 1, 64, plane->rows - 2)).setTo(9);
        EXPECT_EQ(cv::countNonZero(*plane != 9), 0);
    }
}

TEST(GaussianBlur, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat source = noise(200, 200, 4);
    const cv::Mat expected = blurred(source, 21);
    vel::test::forThreadCounts([&] {
        cv::Mat result;
        vel::runInTeam([&] { result = blurred(source, 21); });
        EXPECT_TRUE(sameBits(result, expected));
    });
}

} // namespace
