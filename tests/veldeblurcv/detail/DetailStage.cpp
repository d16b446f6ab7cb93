#include "velimproclib/veldeblurcv/detail/DetailStage.h"

#include "tests/support/AddressSpaceLimit.h"
#include "tests/support/EnhancedHalf.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/veldeblurcv/detail/HalfTiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

namespace vel {
namespace {

using test::enhancedHalf;
using test::sameBits;

cv::Mat tile(int side, int seed = 3) {
    cv::Mat plane(side, side, CV_32FC1);
    cv::RNG random(static_cast<std::uint64_t>(seed));
    random.fill(plane, cv::RNG::UNIFORM, 0.3, 0.6);
    plane.colRange(side / 2, side) += 0.2;
    return plane;
}

TEST(DetailStage, EnhancesHalvesOf152RowsAndMergesThem) {
    const cv::Mat source = tile(256);
    cv::Mat expected(256, 256, CV_32FC1);
    TBMerge(enhancedHalf(source.rowRange(0, 152), 0.5f, 0.3f),
            enhancedHalf(source.rowRange(104, 256), 0.5f, 0.3f), expected);

    CDetailStage stage(256, 256);
    cv::Mat luminance = source.clone();
    stage.Proc(luminance, 0.5f, 0.3f);
    EXPECT_TRUE(sameBits(luminance, expected));
    EXPECT_FALSE(sameBits(luminance, source));
}

TEST(DetailStage, OddTileHeightsTruncateTheHalves) {
    const cv::Mat source = tile(101);
    cv::Mat expected(101, 101, CV_32FC1);
    TBMerge(enhancedHalf(source.rowRange(0, 74), 0.5f, 0.3f),
            enhancedHalf(source.rowRange(27, 101), 0.5f, 0.3f), expected);
    cv::Mat luminance = source.clone();
    CDetailStage(101, 101).Proc(luminance, 0.5f, 0.3f);
    EXPECT_TRUE(sameBits(luminance, expected));
}

/// The number that `call` throws, or 0.
template <class Call>
int failureOf(Call&& call) {
    try {
        call();
    } catch (int failure) {
        return failure;
    }
    return 0;
}

TEST(DetailStage, TilesThatNoScratchImageCanHaveFailAtConstruction) {
    constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(failureOf([] { CDetailStage(kHuge, 2); }), kNoPixels);
}

TEST(DetailStage, AStageThatNeverRunsAllocatesItsScratchImages) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer does not support a limit of the address space";
#endif
    constexpr int kSide = 1024;
    constexpr std::size_t kRoomForTwoOfFourImages = std::size_t{5} << 20;
    const test::AddressSpaceLimit limit(kRoomForTwoOfFourImages);
    EXPECT_EQ(failureOf([] { CDetailStage(kSide, kSide); }), kNoPixels);
}

TEST(DetailStage, ExhaustedMemoryOfASectionIsRaisedAndTheNextTileWorks) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer does not support a limit of the address space";
#endif
    constexpr int kSide = 1024;
    constexpr std::size_t kRoomForTheHalvesAlone = std::size_t{8} << 20;
    const test::ThreadCount both(2);
    cv::Mat warmUp = tile(256);
    CDetailStage(256, 256).Proc(warmUp, 0.5f, 0.3f);

    CDetailStage stage(kSide, kSide);
    cv::Mat luminance = tile(kSide);
    int failure = 0;
    {
        const test::AddressSpaceLimit limit(kRoomForTheHalvesAlone);
        failure = failureOf([&] { stage.Proc(luminance, 0.5f, 0.3f); });
    }
    EXPECT_EQ(failure, kNoSmootherMemory);
    EXPECT_TRUE(sameBits(luminance, tile(kSide)));
    stage.Proc(luminance, 0.5f, 0.3f);
    cv::Mat expected = tile(kSide);
    CDetailStage(kSide, kSide).Proc(expected, 0.5f, 0.3f);
    EXPECT_TRUE(sameBits(luminance, expected));
}

TEST(DetailStage, ResultsDoNotDependOnEarlierTiles) {
    CDetailStage stage(256, 256);
    for (const int seed : {1, 2, 1}) {
        cv::Mat luminance = tile(256, seed);
        stage.Proc(luminance, 0.5f, 0.3f);
        CDetailStage fresh(256, 256);
        cv::Mat expected = tile(256, seed);
        fresh.Proc(expected, 0.5f, 0.3f);
        EXPECT_TRUE(sameBits(luminance, expected)) << seed;
    }
}

TEST(DetailStage, WritesIntoTheGivenPlane) {
    cv::Mat luminance = tile(256);
    const unsigned char* data = luminance.data;
    CDetailStage(256, 256).Proc(luminance, 0.5f, 0.3f);
    EXPECT_EQ(luminance.data, data);
}

TEST(DetailStage, ResultDoesNotDependOnTheNumberOfThreads) {
    for (const int side : {256, 512}) {
        CDetailStage stage(side, side);
        cv::Mat expected = tile(side);
        stage.Proc(expected, 0.5f, 0.3f);
        test::forThreadCounts([&] {
            cv::Mat luminance = tile(side);
            stage.Proc(luminance, 0.5f, 0.3f);
            EXPECT_TRUE(sameBits(luminance, expected)) << side;
        });
    }
}

/// A checked upper part over waves: the halves differ where they overlap, because the smoother's
/// steps depend on the whole half.
cv::Mat tileWithUnequalHalves() {
    cv::Mat plane(256, 256, CV_32FC1);
    for (int y = 0; y < plane.rows; ++y) {
        for (int x = 0; x < plane.cols; ++x) {
            const double wave = 0.5 + 0.05 * std::sin(0.2 * y) + 0.02 * std::sin(0.3 * x);
            const double check = (x / 8 + y / 8) % 2 == 0 ? 1.0 : 0.0;
            plane.at<float>(y, x) = static_cast<float>(y < 100 ? check : wave);
        }
    }
    return plane;
}

TEST(DetailStage, TheHalvesFadeIntoEachOtherOverTheMiddleSixteenRows) {
    const cv::Mat source = tileWithUnequalHalves();
    const cv::Mat top = enhancedHalf(source.rowRange(0, 152), 0.5f, 0.0f);
    const cv::Mat bottom = enhancedHalf(source.rowRange(104, 256), 0.5f, 0.0f);
    cv::Mat luminance = source.clone();
    CDetailStage(256, 256).Proc(luminance, 0.5f, 0.0f);

    EXPECT_TRUE(sameBits(luminance.rowRange(0, 120), top.rowRange(0, 120)));
    EXPECT_TRUE(sameBits(luminance.rowRange(136, 256), bottom.rowRange(32, 152)));
    for (int y = 120; y < 136; ++y) {
        int measured = 0;
        for (int x = 0; x < 256; ++x) {
            const double upper = top.at<float>(y, x);
            const double lower = bottom.at<float>(y - 104, x);
            if (std::abs(lower - upper) > 1e-3) {
                const double share = (luminance.at<float>(y, x) - upper) / (lower - upper);
                EXPECT_NEAR(share, (y - 119) / 16.0, 1e-3) << x << ',' << y;
                ++measured;
            }
        }
        EXPECT_GT(measured, 10) << "the halves must differ in row " << y;
    }
}

TEST(DetailStage, MergedHalvesAreCloseToTheWholePlane) {
    const cv::Mat source = tile(256);
    cv::Mat luminance = source.clone();
    CDetailStage(256, 256).Proc(luminance, 0.5f, 0.0f);
    EXPECT_LE(cv::norm(luminance, enhancedHalf(source, 0.5f, 0.0f), cv::NORM_INF), 0.005);
}

TEST(DetailStage, APlaneOfNaNsDoesNotSpoilTheNextTile) {
    CDetailStage stage(256, 256);
    cv::Mat luminance(256, 256, CV_32FC1, cv::Scalar(std::nanf("")));
    stage.Proc(luminance, 0.5f, 0.3f);
    luminance = tile(256);
    stage.Proc(luminance, 0.5f, 0.3f);
    cv::Mat expected = tile(256);
    CDetailStage(256, 256).Proc(expected, 0.5f, 0.3f);
    EXPECT_TRUE(sameBits(luminance, expected));
}

} // namespace
} // namespace vel
