#include "velimproclib/veldeblurcv/detail/DetailStage.h"

#include "tests/support/AddressSpaceLimit.h"
#include "tests/support/EnhancedHalf.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
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

TEST(DetailStage, ScratchImagesAreAllocatedBeforeTheStageRuns) {
    constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();
    try {
        const CDetailStage stage(kHuge, 2);
        FAIL() << "nothing was thrown";
    } catch (int failure) {
        EXPECT_EQ(failure, 102);
    }
}

TEST(DetailStage, MemoryThatASectionCannotHaveRaises120AndTheStageServesTheNextTile) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer does not live with a limit of address space";
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
        try {
            stage.Proc(luminance, 0.5f, 0.3f);
        } catch (int caught) {
            failure = caught;
        }
    }
    EXPECT_EQ(failure, 120);
    EXPECT_TRUE(sameBits(luminance, tile(kSide)));
    stage.Proc(luminance, 0.5f, 0.3f);
    cv::Mat expected = tile(kSide);
    CDetailStage(kSide, kSide).Proc(expected, 0.5f, 0.3f);
    EXPECT_TRUE(sameBits(luminance, expected));
}

TEST(DetailStage, OneObjectServesTileAfterTile) {
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

TEST(DetailStage, WritesIntoThePlaneThatItWasGiven) {
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

TEST(DetailStage, SeamOfTheHalvesDoesNotShow) {
    // Horizontal stripes give every row a neighbourhood of its own; the halves agree where they
    // meet up to what their edges still say there.
    const cv::Mat source = tile(256);
    cv::Mat luminance = source.clone();
    CDetailStage(256, 256).Proc(luminance, 0.5f, 0.0f);
    const cv::Mat whole = enhancedHalf(source, 0.5f, 0.0f);
    EXPECT_LE(cv::norm(luminance, whole, cv::NORM_INF), 0.02);
}

TEST(DetailStage, PlaneOfNotANumberIsSurvived) {
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
