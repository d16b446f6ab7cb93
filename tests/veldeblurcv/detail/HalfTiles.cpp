#include "velimproclib/veldeblurcv/detail/HalfTiles.h"

#include <gtest/gtest.h>
#include <string>

namespace {

cv::Mat ramp(int rows, int columns, float base) {
    cv::Mat plane(rows, columns, CV_32FC1);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            plane.at<float>(y, x) =
                base + 0.37F * static_cast<float>(y) + 0.011F * static_cast<float>(x);
        }
    }
    return plane;
}

std::string failureOf(const cv::Mat& top, const cv::Mat& bottom, cv::Mat& plane) {
    try {
        vel::TBMerge(top, bottom, plane);
    } catch (const char* text) {
        return text;
    }
    return {};
}

TEST(SplitTileHalves, HalvesShareThePlanesPixelsAndOverlapByTwiceTheExtraRows) {
    cv::Mat plane = ramp(256, 5, 0);
    cv::Mat top;
    cv::Mat bottom;
    EXPECT_EQ(vel::splitTileHalves(plane, top, bottom, 24), 152);
    EXPECT_EQ(top.rows, 152);
    EXPECT_EQ(bottom.rows, 152);
    EXPECT_EQ(top.data, plane.data);
    EXPECT_EQ(bottom.data, plane.ptr(104));
    EXPECT_EQ(bottom.cols, 5);
}

TEST(SplitTileHalves, HalfOfAnOddNumberOfRowsIsTruncated) {
    cv::Mat plane = ramp(101, 3, 0);
    cv::Mat top;
    cv::Mat bottom;
    EXPECT_EQ(vel::splitTileHalves(plane, top, bottom, 10), 60);
    EXPECT_EQ(bottom.data, plane.ptr(41));
}

TEST(SplitTileHalves, PlanesWithTooFewRowsFail) {
    cv::Mat plane = ramp(40, 3, 0);
    cv::Mat top;
    cv::Mat bottom;
    EXPECT_THROW(vel::splitTileHalves(plane, top, bottom, 24), cv::Exception);
}

TEST(TBMerge, BlendsTheMiddleThirdOfTheOverlapFromASixteenthToAll) {
    const cv::Mat top = ramp(152, 7, 0);
    const cv::Mat bottom = ramp(152, 7, 1000);
    cv::Mat plane(256, 7, CV_32FC1, cv::Scalar(-1));
    vel::TBMerge(top, bottom, plane);
    for (int r = 0; r < 256; ++r) {
        for (int x = 0; x < 7; ++x) {
            float expected = 0;
            if (r < 120) {
                expected = top.at<float>(r, x);
            } else if (r < 136) {
                const double weight = (r - 119) / 16.0;
                expected =
                    static_cast<float>(static_cast<double>(top.at<float>(r, x)) * (1 - weight) +
                                       static_cast<double>(bottom.at<float>(r - 104, x)) * weight);
            } else {
                expected = bottom.at<float>(r - 104, x);
            }
            ASSERT_EQ(plane.at<float>(r, x), expected) << r;
        }
    }
}

TEST(TBMerge, WeightGrowsInSinglePrecision) {
    // An overlap of 21 rows blends seven rows; one seventh is not an exact float.
    const cv::Mat top = ramp(40, 3, 0);
    const cv::Mat bottom = ramp(40, 3, 10);
    cv::Mat plane(59, 3, CV_32FC1);
    vel::TBMerge(top, bottom, plane);
    float weight = 1.0F / 7.0F;
    for (int r = 26; r < 33; ++r) {
        const double share = static_cast<double>(weight);
        for (int x = 0; x < 3; ++x) {
            const auto expected =
                static_cast<float>(static_cast<double>(top.at<float>(r, x)) * (1 - share) +
                                   static_cast<double>(bottom.at<float>(r - 19, x)) * share);
            ASSERT_EQ(plane.at<float>(r, x), expected);
        }
        weight += 1.0F / 7.0F;
    }
    EXPECT_EQ(plane.at<float>(25, 1), top.at<float>(25, 1));
    EXPECT_EQ(plane.at<float>(33, 1), bottom.at<float>(14, 1));
}

TEST(TBMerge, RestoresASplitPlaneExactly) {
    for (const int rows : {256, 512, 101, 64}) {
        const cv::Mat plane = ramp(rows, 9, 0.125F);
        cv::Mat top;
        cv::Mat bottom;
        vel::splitTileHalves(plane, top, bottom, 24);
        cv::Mat merged(rows, 9, CV_32FC1, cv::Scalar(-1));
        vel::TBMerge(top.clone(), bottom.clone(), merged);
        EXPECT_EQ(cv::countNonZero(plane != merged), 0) << rows;
    }
}

TEST(TBMerge, TooLittleOverlapFailsWithItsText) {
    for (const int overlap : {-3, 0, 1, 2, 3, 4, 6}) {
        const cv::Mat top = ramp(20, 2, 0);
        const cv::Mat bottom = ramp(20, 2, 0);
        cv::Mat plane(40 - overlap, 2, CV_32FC1);
        EXPECT_EQ(failureOf(top, bottom, plane), "TBMerge: not enough overlap") << overlap;
    }
    for (const int overlap : {5, 7, 8, 9, 48}) {
        const cv::Mat top = ramp(60, 2, 0);
        const cv::Mat bottom = ramp(60, 2, 0);
        cv::Mat plane(120 - overlap, 2, CV_32FC1);
        EXPECT_EQ(failureOf(top, bottom, plane), "") << overlap;
    }
}

TEST(TBMerge, PartsThatDoNotFitThePlaneFail) {
    cv::Mat plane(50, 4, CV_32FC1);
    EXPECT_THROW(vel::TBMerge(ramp(40, 4, 0), ramp(60, 4, 0), plane), cv::Exception);
    EXPECT_THROW(vel::TBMerge(ramp(40, 3, 0), ramp(40, 3, 0), plane), cv::Exception);
}

} // namespace
