#include "velimproclib/frame/DeblurTile.h"

#include <gtest/gtest.h>

namespace {

using vel::CDeblurTile;

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

TEST(DeblurTile, LimitStrengthOneHoldsToTheBounds) {
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

TEST(DeblurTile, LimiterLooksAThirdOfTheKernelAround) {
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

TEST(DeblurTile, PlanesAreZeroedWhenMadeAndKeptFromTileToTile) {
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

} // namespace
