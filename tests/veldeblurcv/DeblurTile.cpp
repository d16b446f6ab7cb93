#include "velimproclib/veldeblurcv/DeblurTile.h"

#include "tests/support/sameBits.h"
#include "velimproclib/veldeblurcv/kernels/createDiscKernel.h"
#include "velimproclib/veldeblurcv/sharpening/SharpenEdge.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace {

using vel::CDeblurTile;
using vel::test::sameBits;

TEST(DeblurTile, SideFollowsTheLargerImageSide) {
    CDeblurTile tile;
    EXPECT_EQ(tile.tileSizeFor(cv::Size(1, 1)), 256);
    EXPECT_EQ(tile.tileSizeFor(cv::Size(256, 10)), 256);
    EXPECT_EQ(tile.tileSizeFor(cv::Size(257, 10)), 512);
    EXPECT_EQ(tile.tileSizeFor(cv::Size(10, 512)), 512);
    EXPECT_EQ(tile.tileSizeFor(cv::Size(513, 513)), 1024);
    EXPECT_EQ(tile.tileSizeFor(cv::Size(1024, 1024)), 1024);
    EXPECT_EQ(tile.tileSizeFor(cv::Size(1025, 10)), 512);
    EXPECT_EQ(tile.tileSizeFor(cv::Size(6000, 4000)), 512);
    EXPECT_EQ(tile.m_w, 512);
    EXPECT_EQ(tile.m_h, 512);
}

TEST(DeblurTile, StartsWithTheDocumentedValues) {
    const CDeblurTile tile{};
    EXPECT_EQ(tile.m_w, 1024);
    EXPECT_EQ(tile.m_h, 1024);
    EXPECT_EQ(tile.m_edgeRadius, 0.85f);
    EXPECT_EQ(tile.m_edgeSlope, 0.0f);
    EXPECT_EQ(tile.m_edgeGain, 1.0f);
    EXPECT_EQ(tile.m_edgeFloor, 0.005f);
    EXPECT_TRUE(tile.m_deblurred.empty());
    EXPECT_TRUE(tile.m_chromaTmp.empty());
    EXPECT_TRUE(tile.m_luma.empty());
}

TEST(DeblurTile, LimitStrengthBelowOneTenthBypassesTheLimiter) {
    CDeblurTile tile;
    tile.setLimiter(0.05f, 15);
    EXPECT_EQ(tile.m_limit.m_mix, 1.0f);
    tile.setLimiter(0.1f, 15);
    EXPECT_EQ(tile.m_limit.m_mix, 0.9f);
}

TEST(DeblurTile, LimitStrengthOneLimitsToTheBounds) {
    CDeblurTile tile;
    tile.setLimiter(1.0f, 15);
    EXPECT_EQ(tile.m_limit.m_upper, 1.0f);
    EXPECT_EQ(tile.m_limit.m_lower, 1.0f);
    EXPECT_EQ(tile.m_limit.m_mix, 0.0f);
}

TEST(DeblurTile, LimitStrengthZeroAllowsFourTimesTheBounds) {
    CDeblurTile tile;
    tile.setLimiter(0.0f, 15);
    EXPECT_EQ(tile.m_limit.m_upper, 4.0f);
    EXPECT_EQ(tile.m_limit.m_lower, 0.25f);
    EXPECT_EQ(tile.m_limit.m_innerPasses, 1);
}

TEST(DeblurTile, TheLimiterExpectsPlanesOfTheTileSize) {
    CDeblurTile tile;
    tile.tileSizeFor(cv::Size(300, 300));
    tile.setLimiter(0.5f, 15);
    EXPECT_EQ(tile.m_limit.m_imSize, cv::Size(512, 512));
}

TEST(DeblurTile, TheLimiterCoversANeighbourhoodOfAThirdOfTheKernel) {
    CDeblurTile tile;
    const auto radiusFor = [&](int side) {
        tile.setLimiter(0.5f, side);
        return tile.m_limit.m_radius;
    };
    EXPECT_EQ(radiusFor(1), 1);
    EXPECT_EQ(radiusFor(5), 1);
    EXPECT_EQ(radiusFor(7), 2);
    EXPECT_EQ(radiusFor(15), 5);
    EXPECT_EQ(radiusFor(40), 5);
}

TEST(DeblurTile, PlanesStartWithZerosAndKeepTheirContentFromTileToTile) {
    CDeblurTile tile;
    std::array<cv::Mat, 3> planes;
    for (cv::Mat& plane : planes) {
        plane = cv::Mat(256, 256, CV_32FC1, cv::Scalar(0.25));
    }
    tile.process(planes, false, false);
    ASSERT_EQ(tile.m_deblurred.size(), cv::Size(256, 256));
    EXPECT_EQ(cv::countNonZero(tile.m_deblurred), 0);
    EXPECT_EQ(cv::countNonZero(tile.m_chromaTmp), 0);
    EXPECT_EQ(cv::countNonZero(tile.m_luma), 0);
    tile.m_luma.setTo(3.0);
    tile.process(planes, false, false);
    EXPECT_EQ(cv::countNonZero(tile.m_luma == 3.0f), 256 * 256);
    EXPECT_EQ(cv::countNonZero(planes[0] == 0.25f), 256 * 256);
}

std::array<cv::Mat, 3> texturedPlanes() {
    cv::RNG random(5);
    std::array<cv::Mat, 3> planes;
    for (cv::Mat& plane : planes) {
        plane.create(256, 256, CV_32FC1);
        random.fill(plane, cv::RNG::UNIFORM, 0.1, 0.9);
        cv::GaussianBlur(plane, plane, cv::Size(5, 5), 1.2);
    }
    return planes;
}

void prepare(CDeblurTile& tile, const cv::Mat& kernel) {
    const int side = tile.tileSizeFor(cv::Size(200, 200));
    const cv::Size size(side, side);
    tile.m_deconv.setup(kernel, cv::Point(), size, 3000.0f, 0.5f, true);
    tile.m_chroma.setup(kernel, cv::Point(), size, 0.01f);
    tile.setLimiter(0.7f, kernel.cols);
    tile.m_edgeSlope = 2.0f;
    tile.m_edgeGain = 1.3f;
}

TEST(DeblurTile, RunsDeconvolutionThenLimiterThenSharpener) {
    const cv::Mat kernel = vel::createDiscKernel(2.0f);
    CDeblurTile tile;
    prepare(tile, kernel);
    std::array<cv::Mat, 3> planes = texturedPlanes();
    tile.process(planes, true, true);

    CDeblurTile byHand;
    prepare(byHand, kernel);
    std::array<cv::Mat, 3> expected = texturedPlanes();
    const cv::Mat before = expected[0].clone();
    cv::Mat out = cv::Mat::zeros(256, 256, CV_32FC1);
    byHand.m_deconv.Proc(expected[0], out);
    byHand.m_limit.Proc(before, out, expected[0]);
    vel::CSharpenEdge sharpener(byHand.m_edgeRadius, byHand.m_edgeFloor);
    sharpener.m_slope = byHand.m_edgeSlope;
    sharpener.m_gain = byHand.m_edgeGain;
    sharpener.Proc(expected[0], out);
    EXPECT_TRUE(sameBits(planes[0], out));
    EXPECT_TRUE(sameBits(tile.m_luma, before));
    for (const std::size_t chroma : {1u, 2u}) {
        cv::Mat restored(256, 256, CV_32FC1);
        byHand.m_chroma.Proc(expected[chroma], restored);
        EXPECT_TRUE(sameBits(planes[chroma], restored));
    }
}

TEST(DeblurTile, AFailureInsideASectionReachesTheCaller) {
    CDeblurTile tile;
    prepare(tile, vel::createDiscKernel(2.0f));
    // The limiter, which runs in a section, fails for planes of another size.
    tile.m_limit.m_imSize = cv::Size(128, 128);
    std::array<cv::Mat, 3> planes = texturedPlanes();
    EXPECT_THROW(tile.process(planes, true, false), const char*);
}

} // namespace
