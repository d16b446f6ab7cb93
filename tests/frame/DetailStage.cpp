#include "velimproclib/frame/DetailStage.h"

#include "tests/support/Threads.h"
#include "velimproclib/tiles/HalfTiles.h"
#include "velimproclib/veldeblurcv/enhanceHalf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

namespace vel {
namespace {

cv::Mat tile(int side, int seed = 3) {
    cv::Mat plane(side, side, CV_32FC1);
    cv::RNG random(static_cast<std::uint64_t>(seed));
    random.fill(plane, cv::RNG::UNIFORM, 0.3, 0.6);
    plane.colRange(side / 2, side) += 0.2;
    return plane;
}

bool sameBits(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0;
}

cv::Mat enhancedHalf(const cv::Mat& half, float gain, float gamma) {
    cv::Mat result = half.clone();
    IMG<float, 1> detail(half.cols, half.rows);
    IMG<float, 1> guide(half.cols, half.rows);
    CEdgeSmoother smoother;
    CDetailCurve curve;
    enhanceHalf(result, detail, guide, smoother, curve, gain, gamma);
    return result;
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
