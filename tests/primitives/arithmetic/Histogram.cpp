#include "velimproclib/primitives/arithmetic/Histogram.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/GuardedPlane.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::GuardedPlane;
using Plane = GuardedPlane<std::uint8_t>;
using Integers = std::vector<std::int32_t>;

struct Result {
    Integers hist;
    Integers levels;
};

Result histogram(const Plane& src, int n, int lower, int upper) {
    Result result{Integers(static_cast<std::size_t>(n - 1), -1),
                  Integers(static_cast<std::size_t>(n), -1)};
    EXPECT_EQ(kOk, histogramEvenU8(src.data(), src.step(), src.width(), src.height(),
                                   result.hist.data(), result.levels.data(), n, lower, upper));
    return result;
}

TEST(Histogram, OneBinForEveryGreyValue) {
    std::mt19937 random(81);
    std::uniform_int_distribution<int> pixel(0, 255);
    for (const int w : {1, 2, 3, 4, 5, 67, 256}) {
        for (const int extra : {0, 5}) {
            Plane src(w, 9, extra, 1);
            src.fill([&] { return pixel(random) & pixel(random); });
            Integers expected(256, 0);
            for (int y = 0; y < 9; ++y) {
                for (int x = 0; x < w; ++x) {
                    ++expected[src.at(x, y)];
                }
            }
            const Result result = histogram(src, 257, 0, 256);
            EXPECT_EQ(expected, result.hist);
            for (int k = 0; k <= 256; ++k) {
                EXPECT_EQ(k, result.levels[static_cast<std::size_t>(k)]);
            }
        }
    }
}

TEST(Histogram, RemainderOfTheDivisionGoesToTheFirstIntervals) {
    Plane src(1, 1);
    src.fill([] { return 0; });
    EXPECT_EQ((Integers{0, 4, 7, 10}), histogram(src, 4, 0, 10).levels);
    EXPECT_EQ((Integers{0, 4, 8, 11}), histogram(src, 4, 0, 11).levels);
    EXPECT_EQ((Integers{-5, -2, 0, 2, 4}), histogram(src, 5, -5, 4).levels);
    EXPECT_EQ((Integers{0, 1, 2, 2, 2}), histogram(src, 5, 0, 2).levels);
}

TEST(Histogram, IntervalsIncludeTheirLowerLevelAndPixelsOutsideAreNotCounted) {
    Plane src(256, 1);
    src.fill([n = 0]() mutable { return n++; });
    const Result result = histogram(src, 4, 100, 110);
    EXPECT_EQ((Integers{100, 104, 107, 110}), result.levels);
    EXPECT_EQ((Integers{4, 3, 3}), result.hist);
    EXPECT_EQ((Integers{256}), histogram(src, 2, -1000, 1000).hist);
    EXPECT_EQ((Integers{0}), histogram(src, 2, 256, 1000).hist);
    EXPECT_EQ((Integers{0, 0}), histogram(src, 3, 200, 100).hist);
}

TEST(Histogram, LevelsOfTheWholeIntegerRangeDoNotOverflow) {
    Plane src(3, 1);
    src.fill([] { return 9; });
    constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    const Result up = histogram(src, 3, kMin, kMax);
    EXPECT_EQ((Integers{kMin, 0, kMax}), up.levels);
    EXPECT_EQ((Integers{0, 3}), up.hist);
    const Result down = histogram(src, 3, kMax, kMin);
    EXPECT_EQ(kMax, down.levels.front());
    EXPECT_EQ(kMin, down.levels.back());
    EXPECT_EQ((Integers{0, 0}), down.hist);
}

TEST(Histogram, ChecksPointersThenSizesThenTheStepAndWritesNothing) {
    test::expectChecksInOrder({"histogramEvenU8", 3, 2, 1, [](const test::CheckedArguments& g) {
                                   return histogramEvenU8(
                                       g.at<std::uint8_t>(0), g.steps[0], g.sizes[0], g.sizes[1],
                                       g.at<std::int32_t>(1), g.at<std::int32_t>(2), 3, 0, 4);
                               }});
}

TEST(Histogram, FewerThanTwoLevelsAreRefusedLastAndNothingIsWritten) {
    Plane src(4, 4);
    std::int32_t hist[2] = {7, 7};
    std::int32_t levels[2] = {7, 7};
    for (const std::int32_t n : {1, 0, -1}) {
        EXPECT_EQ(kTooFewHistogramLevels,
                  histogramEvenU8(src.data(), 4, 4, 4, hist, levels, n, 0, 4));
        EXPECT_EQ(kBadStep, histogramEvenU8(src.data(), 0, 4, 4, hist, levels, n, 0, 4));
    }
    EXPECT_EQ(7, hist[0]);
    EXPECT_EQ(7, levels[0]);
}

} // namespace
