#include "velimproclib/veldeblurcv/estimation/edges/softenEdges.h"

#include "tests/support/digestOf.h"
#include "tests/support/sameBits.h"
#include "tests/veldeblurcv/estimation/SoftScene.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>

namespace {

using vel::softenEdges;
using vel::test::digestOf;
using vel::test::sameBits;
using vel::test::softScene;

using Bytes = cv::Mat_<std::uint8_t>;

cv::Mat softened(const cv::Mat& image, float sigma) {
    cv::Mat edge = image.clone();
    cv::Mat scratch(image.size(), CV_8UC1, cv::Scalar(0));
    softenEdges(edge, scratch, sigma);
    return edge;
}

TEST(SoftenEdges, ResultsAreThoseOfTheDigest) {
    const cv::Mat scene = softScene(61, 40);
    EXPECT_EQ(digestOf({softened(scene, 0.2f), softened(scene, 0.7f), softened(scene, 2.0f)}),
              "444F798D9E89BA24");
}

TEST(SoftenEdges, PointBecomesTheTaps) {
    // exp(-0.5 i^2) * 4096 + 0.49, truncated, is 4096, 2484 and 554; the sum is 10172.
    Bytes image(21, 21, std::uint8_t{0});
    image(10, 10) = 255;
    const cv::Mat soft = softened(image, 1.0f);
    const int row[] = {14, 62, 103, 62, 14}; // 255 * tap / sum, rounded
    const int taps[] = {554, 2484, 4096, 2484, 554};
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            const int expected = (row[dx + 2] * taps[dy + 2] + 10172 / 2) / 10172;
            EXPECT_EQ(soft.at<std::uint8_t>(10 + dy, 10 + dx), expected) << dx << ' ' << dy;
        }
    }
    EXPECT_EQ(soft.at<std::uint8_t>(10, 13), 0);
    EXPECT_EQ(soft.at<std::uint8_t>(13, 10), 0);
}

TEST(SoftenEdges, RingOfTwoPixelsKeepsItsValues) {
    const cv::Mat scene = softScene(30, 20);
    cv::Mat changed = softened(scene, 1.0f) != scene;
    EXPECT_GT(cv::countNonZero(changed), 200);
    changed(cv::Rect(2, 2, 26, 16)).setTo(0);
    EXPECT_EQ(cv::countNonZero(changed), 0);
}

TEST(SoftenEdges, ColumnsReachIntoTheScratchRowsOfTheRing) {
    cv::Mat edge(20, 20, CV_8UC1, cv::Scalar(0));
    cv::Mat scratch(20, 20, CV_8UC1, cv::Scalar(255));
    softenEdges(edge, scratch, 1.0f);
    EXPECT_EQ(edge.at<std::uint8_t>(2, 10), 76); // 255 * (2484 + 554) / 10172
    EXPECT_EQ(edge.at<std::uint8_t>(4, 10), 0);
}

TEST(SoftenEdges, ImagesWithoutAnInnerRegionStayAsTheyAre) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(4, 30), cv::Size(30, 4)}) {
        const cv::Mat scene = softScene(size.width, size.height);
        EXPECT_TRUE(sameBits(softened(scene, 1.0f), scene));
    }
}

} // namespace
