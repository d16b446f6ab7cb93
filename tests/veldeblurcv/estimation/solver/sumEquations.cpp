#include "velimproclib/veldeblurcv/estimation/solver/sumEquations.h"

#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/solver/NormalEquations.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <omp.h>
#include <random>
#include <vector>

namespace {

using vel::CProgressSpan;
using vel::EquationGeometry;
using vel::test::sameBits;
using vel::test::ThreadCount;

struct Sums {
    cv::Mat matrix;
    cv::Mat rightHand;
    std::int64_t count = 0;
};

Sums noSums(cv::Size kernel) {
    return {cv::Mat::zeros(kernel.area(), kernel.area(), CV_64FC1),
            cv::Mat::zeros(kernel.area(), 1, CV_64FC1)};
}

/// Half the kernel's columns above a pixel and half its rows to the left, as the solver has it.
EquationGeometry geometryOf(cv::Size kernel, cv::Size image) {
    return {kernel, image, kernel.width / 2, kernel.height / 2};
}

void addEquations(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask,
                  const EquationGeometry& geometry, CProgressSpan& progress, Sums& sums) {
    sums.count = vel::sumEquations(
        {image, blur, mask}, geometry, progress,
        {sums.matrix.ptr<double>(), sums.matrix.step1(), sums.rightHand.ptr<double>()});
}

Sums sumsOf(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask, cv::Size kernel) {
    CProgressSpan silent;
    Sums sums = noSums(kernel);
    addEquations(image, blur, mask, geometryOf(kernel, image.size()), silent, sums);
    return sums;
}

std::array<double, 6> derivatives(const cv::Mat& image, int r, int c) {
    const auto p = [&](int y, int x) { return double{1} * image.at<unsigned char>(y, x); };
    return {p(r, c),
            p(r, c + 1) - p(r, c),
            p(r + 1, c) - p(r, c),
            p(r, c + 2) - 2 * p(r, c + 1) + p(r, c),
            p(r + 2, c) - 2 * p(r + 1, c) + p(r, c),
            p(r + 1, c + 1) - p(r, c + 1) - p(r + 1, c) + p(r, c)};
}

/// The definition as a plain loop in doubles. Patches that leave the image do not count.
Sums plainSums(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask, cv::Size kernel) {
    const int kW = kernel.width;
    const int kH = kernel.height;
    const int n = kW * kH;
    Sums sums = noSums(kernel);
    std::vector<std::array<double, 6>> x(static_cast<std::size_t>(n));
    for (int row = kH + 2; row <= image.rows - kH - 3; ++row) {
        for (int column = kW + 2; column <= image.cols - kW - 3; ++column) {
            if (mask.at<unsigned char>(row, column) == 0 || row < kW / 2 || column < kH / 2) {
                continue;
            }
            ++sums.count;
            const std::array<double, 6> y = derivatives(blur, row, column);
            for (int i = 0; i < kW; ++i) {
                for (int j = 0; j < kH; ++j) {
                    x[static_cast<std::size_t>(i * kH + j)] =
                        derivatives(image, row - kW / 2 + j, column - kH / 2 + i);
                }
            }
            for (int u = 0; u < n; ++u) {
                const auto& xu = x[static_cast<std::size_t>(u)];
                for (int v = 0; v < n; ++v) {
                    const auto& xv = x[static_cast<std::size_t>(v)];
                    double term = 0.0;
                    for (std::size_t d = 0; d < 6; ++d) {
                        term += xu[d] * xv[d];
                    }
                    sums.matrix.at<double>(u, v) += term;
                }
                double term = 0.0;
                for (std::size_t d = 0; d < 6; ++d) {
                    term += xu[d] * y[d];
                }
                sums.rightHand.at<double>(u) += term;
            }
        }
    }
    return sums;
}

void expectPlainSums(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask,
                     cv::Size kernel, const Sums& expected) {
    const Sums sums = sumsOf(image, blur, mask, kernel);
    EXPECT_EQ(sums.count, expected.count);
    EXPECT_TRUE(sameBits(sums.matrix, expected.matrix)) << kernel;
    EXPECT_TRUE(sameBits(sums.rightHand, expected.rightHand)) << kernel;
}

cv::Mat randomImage(cv::Size size, std::mt19937& random) {
    std::uniform_int_distribution<int> level(0, 255);
    cv::Mat image(size, CV_8UC1);
    for (int row = 0; row < image.rows; ++row) {
        std::generate_n(image.ptr(row), image.cols,
                        [&] { return static_cast<unsigned char>(level(random)); });
    }
    return image;
}

/// A mask that selects the given fraction of the pixels.
cv::Mat randomMask(cv::Size size, double fraction, std::mt19937& random) {
    cv::Mat mask = randomImage(size, random);
    for (int row = 0; row < mask.rows; ++row) {
        for (int column = 0; column < mask.cols; ++column) {
            unsigned char& m = mask.at<unsigned char>(row, column);
            m = static_cast<unsigned char>(m < 255.0 * fraction ? m / 2 + 1 : 0);
        }
    }
    return mask;
}

TEST(SumEquations, SumsEqualThePlainLoopOnEveryProcessorVariant) {
    std::mt19937 random(53);
    const cv::Size kernels[] = {{1, 1}, {3, 3}, {5, 9}, {9, 5}, {11, 3}, {13, 13}, {1, 5}};
    for (const cv::Size kernel : kernels) {
        const cv::Size size(2 * kernel.width + 4 + static_cast<int>(random() % 23) + 1,
                            2 * kernel.height + 4 + static_cast<int>(random() % 23) + 1);
        const cv::Mat image = randomImage(size, random);
        const cv::Mat blur = randomImage(size, random);
        const cv::Mat mask = randomMask(size, 0.4, random);
        const Sums expected = plainSums(image, blur, mask, kernel);
        vel::test::forEachTarget([&] { expectPlainSums(image, blur, mask, kernel, expected); });
    }
}

TEST(SumEquations, SumsAreTheSameForEveryNumberOfThreads) {
    std::mt19937 random(54);
    for (const cv::Size kernel : {cv::Size(3, 3), cv::Size(7, 5), cv::Size(9, 9)}) {
        const cv::Size size(71, 83);
        const cv::Mat image = randomImage(size, random);
        const cv::Mat blur = randomImage(size, random);
        const cv::Mat mask = randomMask(size, 0.3, random);
        const Sums expected = plainSums(image, blur, mask, kernel);
        for (const int threads : {1, 2, 3, 5, 16, 100}) {
            SCOPED_TRACE(threads);
            const ThreadCount team(threads);
            expectPlainSums(image, blur, mask, kernel, expected);
        }
    }
}

TEST(SumEquations, LargerKernelsTakeSeveralBatchesAndPanels) {
    std::mt19937 random(55);
    const cv::Size size(64, 72);
    const cv::Mat image = randomImage(size, random);
    const cv::Mat blur = randomImage(size, random);
    const cv::Mat mask = randomMask(size, 0.55, random);
    for (const cv::Size kernel : {cv::Size(17, 17), cv::Size(15, 19), cv::Size(21, 3)}) {
        const Sums expected = plainSums(image, blur, mask, kernel);
        for (const int threads : {1, 2}) {
            const ThreadCount team(threads);
            expectPlainSums(image, blur, mask, kernel, expected);
        }
    }
}

TEST(SumEquations, LargestDifferencesDoNotOverflow) {
    cv::Mat checkers(150, 130, CV_8UC1);
    for (int row = 0; row < checkers.rows; ++row) {
        for (int column = 0; column < checkers.cols; ++column) {
            checkers.at<unsigned char>(row, column) = (row + column) % 2 == 0 ? 255 : 0;
        }
    }
    const cv::Mat everywhere(checkers.size(), CV_8UC1, cv::Scalar(255));
    for (const cv::Size kernel : {cv::Size(1, 1), cv::Size(3, 3)}) {
        const Sums expected = plainSums(checkers, checkers, everywhere, kernel);
        vel::test::forEachTarget(
            [&] { expectPlainSums(checkers, checkers, everywhere, kernel, expected); });
    }
    // Only every second pixel, so that all of them are white.
    cv::Mat white(checkers.size(), CV_8UC1);
    white = checkers / 255;
    const Sums expected = plainSums(checkers, checkers, white, cv::Size(1, 1));
    EXPECT_EQ(expected.matrix.at<double>(0, 0), static_cast<double>(expected.count) * 975375.0);
    ASSERT_GT(expected.count, 2201);
    vel::test::forEachTarget(
        [&] { expectPlainSums(checkers, checkers, white, cv::Size(1, 1), expected); });
}

TEST(SumEquations, ImagesMayBePartsOfLargerOnes) {
    std::mt19937 random(56);
    const cv::Rect part(3, 5, 41, 37);
    const cv::Mat image = randomImage(cv::Size(60, 50), random)(part);
    const cv::Mat blur = randomImage(cv::Size(61, 50), random)(part);
    const cv::Mat mask = randomMask(cv::Size(67, 50), 0.5, random)(part);
    expectPlainSums(image, blur, mask, cv::Size(5, 5),
                    plainSums(image, blur, mask, cv::Size(5, 5)));
}

TEST(SumEquations, SumsAreAddedToThoseOfAnEarlierCall) {
    std::mt19937 random(57);
    const cv::Size size(40, 40);
    const cv::Mat image = randomImage(size, random);
    const cv::Mat blur = randomImage(size, random);
    const cv::Mat mask = randomMask(size, 0.5, random);
    const Sums once = plainSums(image, blur, mask, cv::Size(7, 7));
    CProgressSpan silent;
    Sums sums = noSums(cv::Size(7, 7));
    for (int call = 0; call < 2; ++call) {
        addEquations(image, blur, mask, geometryOf(cv::Size(7, 7), size), silent, sums);
        EXPECT_EQ(sums.count, once.count);
    }
    EXPECT_TRUE(sameBits(sums.matrix, cv::Mat(once.matrix * 2.0)));
    EXPECT_TRUE(sameBits(sums.rightHand, cv::Mat(once.rightHand * 2.0)));
}

TEST(SumEquations, PatchStartsAtTheGivenOffsets) {
    const cv::Size size(40, 50);
    const cv::Size kernel(5, 9);
    cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
    mask.at<unsigned char>(25, 20) = 1;
    for (const cv::Point tap : {cv::Point(0, 0), cv::Point(4, 3), cv::Point(4, 8)}) {
        cv::Mat image = cv::Mat::zeros(size, CV_8UC1);
        image.at<unsigned char>(25 - 2 + tap.y, 20 - 4 + tap.x) = 100;
        const Sums sums = sumsOf(image, image, mask, kernel);
        EXPECT_EQ(sums.count, 1);
        // Columns come before rows. The point is the value of its own unknown, and with it a dx,
        // dy, dxx, dyy and dxy of weight 1.
        const int unknown = tap.x * 9 + tap.y;
        EXPECT_EQ(sums.matrix.at<double>(unknown, unknown), 1e4 * 6);
    }
}

TEST(SumEquations, LongThinKernelsLeaveOutPixelsWhosePatchLeavesTheImage) {
    std::mt19937 random(58);
    for (const cv::Size kernel : {cv::Size(31, 1), cv::Size(1, 31), cv::Size(21, 3)}) {
        const cv::Size size(80, 90);
        // Each image has memory of its exact size, so that a sanitizer sees any read beyond it.
        const cv::Mat image = randomImage(size, random);
        const cv::Mat blur = randomImage(size, random);
        const cv::Mat mask(size, CV_8UC1, cv::Scalar(1));
        const Sums expected = plainSums(image, blur, mask, kernel);
        ASSERT_GT(expected.count, 0);
        expectPlainSums(image, blur, mask, kernel, expected);
    }
}

TEST(SumEquations, OffsetsOutsideTheImageLeaveNothing) {
    std::mt19937 random(59);
    const cv::Size size(30, 30);
    const cv::Mat image = randomImage(size, random);
    CProgressSpan silent;
    for (const int offset : {-1000, 1000}) {
        Sums sums = noSums(cv::Size(3, 3));
        addEquations(image, image, image, {cv::Size(3, 3), size, offset, offset}, silent, sums);
        EXPECT_EQ(sums.count, 0);
        EXPECT_EQ(cv::countNonZero(sums.matrix), 0);
    }
}

TEST(SumEquations, ImagesThatTheMarginsFillLeaveNothing) {
    for (const cv::Size size : {cv::Size(10, 100), cv::Size(100, 10), cv::Size(1, 1)}) {
        const cv::Mat image(size, CV_8UC1, cv::Scalar(200));
        const Sums sums = sumsOf(image, image, image, cv::Size(3, 3));
        EXPECT_EQ(sums.count, 0);
        EXPECT_EQ(cv::countNonZero(sums.matrix), 0);
    }
    const cv::Mat image(11, 11, CV_8UC1, cv::Scalar(200));
    EXPECT_EQ(sumsOf(image, image, image, cv::Size(3, 3)).count, 1);
}

// ---- progress -------------------------------------------------------------------------------

struct Watch {
    std::vector<int> positions;
    bool onlyThreadZero = true;
};

int32_t watch(int32_t current, int32_t, void* userData) {
    auto& seen = *static_cast<Watch*>(userData);
    seen.positions.push_back(current);
    seen.onlyThreadZero = seen.onlyThreadZero && omp_get_thread_num() == 0;
    return 0;
}

std::vector<int> positionsWhileSumming(cv::Size size, cv::Size kernel, const cv::Mat& mask) {
    Watch seen;
    ProgressRecord account{1000, 1000, watch, &seen, 0};
    CProgressSpan span(&account);
    EXPECT_EQ(span.begin(1.0f, 2), 500);
    seen.positions.clear();
    Sums sums = noSums(kernel);
    addEquations(mask, mask, mask, geometryOf(kernel, size), span, sums);
    EXPECT_EQ(account.current, 500);
    EXPECT_TRUE(seen.onlyThreadZero);
    return seen.positions;
}

TEST(SumEquations, OneThreadAdvancesOncePerRow) {
    const ThreadCount one(1);
    for (const int level : {0, 255}) {
        const cv::Mat mask(50, 40, CV_8UC1, cv::Scalar(level));
        // 50 - 2 * 5 - 4 rows; the step of 500 in 40 parts is 12.
        std::vector<int> expected;
        for (int i = 1; i <= 36; ++i) {
            expected.push_back(12 * i);
        }
        EXPECT_EQ(positionsWhileSumming(mask.size(), cv::Size(5, 5), mask), expected);
    }
}

TEST(SumEquations, TeamAdvancesOncePerRowOfTheShareOfThreadZero) {
    const cv::Mat mask(50, 40, CV_8UC1, cv::Scalar(255));
    for (const int threads : {2, 3, 5, 36, 50}) {
        const ThreadCount team(threads);
        const int calls = (36 + threads - 1) / threads;
        const int parts = std::max(1, 40 / threads);
        const std::vector<int> positions = positionsWhileSumming(mask.size(), cv::Size(5, 5), mask);
        ASSERT_EQ(static_cast<int>(positions.size()), calls) << threads;
        for (int i = 0; i < calls; ++i) {
            EXPECT_EQ(positions[static_cast<std::size_t>(i)], (i + 1) * (500 / parts));
        }
    }
}

TEST(SumEquations, RowsAreReportedEvenWhereNoColumnIsLeft) {
    const ThreadCount one(1);
    const cv::Mat narrow(50, 9, CV_8UC1, cv::Scalar(255));
    EXPECT_EQ(positionsWhileSumming(narrow.size(), cv::Size(5, 5), narrow).size(), 36U);
    const cv::Mat low(14, 50, CV_8UC1, cv::Scalar(255));
    EXPECT_TRUE(positionsWhileSumming(low.size(), cv::Size(5, 5), low).empty());
}

int32_t refuse(int32_t current, int32_t, void*) {
    if (current > 100) {
        throw 17;
    }
    return 1;
}

TEST(SumEquations, FailureOfTheCallbackReachesTheCallingThread) {
    const cv::Mat mask(50, 40, CV_8UC1, cv::Scalar(255));
    for (const int threads : {1, 3}) {
        const ThreadCount team(threads);
        int userData = 0;
        ProgressRecord account{1000, 1000, refuse, &userData, 0};
        CProgressSpan span(&account);
        span.begin(1.0f, 2);
        const cv::Size kernel(5, 5);
        Sums sums = noSums(kernel);
        EXPECT_THROW(addEquations(mask, mask, mask, geometryOf(kernel, mask.size()), span, sums),
                     int);
    }
}

} // namespace
