#include "velimproclib/tiles/TileTaper.h"

#include "tests/support/Digest.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <random>
#include <span>

namespace {

using vel::test::sameBits;

/// Values of 16-bit pixels, from integers, so that every platform makes the same ones.
cv::Mat noise(int rows, int columns, unsigned seed) {
    std::mt19937 random(seed);
    cv::Mat plane(rows, columns, CV_32FC1);
    for (auto value = plane.begin<float>(); value != plane.end<float>(); ++value) {
        *value = static_cast<float>(random() >> 16) / 65536.0F;
    }
    return plane;
}

cv::Mat tapered(const cv::Mat& plane, int border) {
    std::array<cv::Mat, 1> planes{plane.clone()};
    vel::CTileTaper taper;
    taper.taperBlock(planes, border);
    return planes[0];
}

/// The last rows of the plane, and the first rows below them.
cv::Mat joinedEdges(const cv::Mat& plane, int edge) {
    cv::Mat joined;
    cv::vconcat(plane.rowRange(plane.rows - edge, plane.rows), plane.rowRange(0, edge), joined);
    return joined;
}

/// The rows pass in double precision.
cv::Mat referenceRows(const cv::Mat& plane, int b) {
    const int side = 2 * (b / 2) + 3;
    const int edge = b + side / 2;
    cv::Mat blurred;
    cv::GaussianBlur(joinedEdges(plane, edge), blurred, {side, side}, 0.2 * side, 0.2 * side,
                     cv::BORDER_REFLECT_101);
    cv::Mat result = plane.clone();
    for (int i = 0; i < b; ++i) {
        const double alpha = std::max(0, i - b / 4 - 1) / static_cast<double>(b - b / 4);
        const int last = plane.rows - 1 - i;
        result.row(i) = alpha * result.row(i) + (1 - alpha) * blurred.row(edge + i);
        result.row(last) = alpha * result.row(last) + (1 - alpha) * blurred.row(edge - 1 - i);
    }
    return result;
}

cv::Mat reference(const cv::Mat& plane, int b) {
    cv::Mat wide;
    plane.convertTo(wide, CV_64F);
    return referenceRows(referenceRows(wide, b).t(), b).t();
}

void expectNear(const cv::Mat& plane, const cv::Mat& expected) {
    EXPECT_LT(cv::norm(cv::Mat_<double>(plane), expected, cv::NORM_INF), 2e-6);
}

/// The blurred seam of the rows pass, to the bit; row `seam.rows / 2` is the plane's first.
cv::Mat blurredSeam(const cv::Mat& plane, int border) {
    const int side = 2 * (border / 2) + 3;
    const int reach = side / 2;
    cv::Mat joined = joinedEdges(plane, border + reach);
    cv::copyMakeBorder(joined, joined, 0, 0, reach, reach, cv::BORDER_REFLECT_101);
    cv::Mat along;
    cv::Mat blurred;
    vel::GaussianBlur(side, 0.2 * side).blur(joined, along, blurred);
    return blurred;
}

TEST(TileTaper, FollowsThePlainReferenceForEveryBorder) {
    for (const int border : {1, 2, 3, 4, 5, 7, 8, 16, 17, 18, 22}) {
        SCOPED_TRACE(border);
        const cv::Mat plane = noise(61, 70, static_cast<unsigned>(border));
        expectNear(tapered(plane, border), reference(plane, border));
    }
}

TEST(TileTaper, FollowsThePlainReferenceOnAWideTile) {
    const cv::Mat plane = noise(256, 600, 3);
    expectNear(tapered(plane, 20), reference(plane, 20));
}

TEST(TileTaper, WeightedSumsAreThoseOfMatrixExpressions) {
    // Rows of the rows pass, in columns that the columns pass does not change.
    const cv::Mat plane = noise(200, 200, 5);
    const int border = 16;
    const cv::Mat seam = blurredSeam(plane, border);
    const cv::Mat result = tapered(plane, border);
    const cv::Range inside(border, 200 - border);
    float alpha = 0;
    for (int i = 0; i < border; ++i) {
        const double weight = static_cast<double>(alpha);
        const cv::Mat top = weight * plane.row(i) + (1.0 - weight) * seam.row(border + i);
        const cv::Mat bottom =
            weight * plane.row(199 - i) + (1.0 - weight) * seam.row(border - 1 - i);
        EXPECT_TRUE(sameBits(result.row(i).colRange(inside), top.colRange(inside))) << i;
        EXPECT_TRUE(sameBits(result.row(199 - i).colRange(inside), bottom.colRange(inside))) << i;
        alpha += i > 4 ? 1.0F / 12.0F : 0.0F;
    }
}

TEST(TileTaper, WeightOfThePlaneGrowsEvenlyAfterTheReplacedRows) {
    struct Case {
        int border, row;
        double weight;
    };
    for (const Case& c :
         {Case{16, 0, 0}, Case{16, 5, 0}, Case{16, 6, 1.0 / 12}, Case{16, 15, 10.0 / 12},
          Case{18, 5, 0}, Case{18, 6, 1.0 / 14}, Case{18, 17, 12.0 / 14}}) {
        cv::Mat plane(128, 128, CV_32FC1, cv::Scalar(0));
        plane.row(c.row).setTo(1);
        const double seam = blurredSeam(plane, c.border).at<float>(c.border + c.row, 64);
        const double result = tapered(plane, c.border).at<float>(c.row, 64);
        EXPECT_NEAR((result - seam) / (1.0 - seam), c.weight, 1e-6) << c.border << ' ' << c.row;
    }
}

TEST(TileTaper, ResultHasTheSameBitsOnEveryPlatform) {
    vel::test::Digest digest;
    for (const int border : {16, 18, 46, 78}) {
        const cv::Mat result = tapered(noise(256, 300, static_cast<unsigned>(border)), border);
        digest.add(std::span<const float>(result.ptr<float>(), result.total()));
    }
    EXPECT_EQ(digest.text(), "668A40195C8BF0CB");
}

TEST(TileTaper, ConstantPlaneStaysConstant) {
    for (const int border : {1, 16, 18, 50}) {
        for (const float level : {0.0F, 0.25F, 0.7F, 1.9F}) {
            const cv::Mat plane(160, 160, CV_32FC1, cv::Scalar(level));
            const cv::Mat result = tapered(plane, border);
            double lowest = 0;
            double highest = 0;
            cv::minMaxLoc(result, &lowest, &highest);
            EXPECT_NEAR(lowest, level, 1e-6);
            EXPECT_NEAR(highest, level, 1e-6);
        }
    }
}

TEST(TileTaper, UsefulPartKeepsItsBits) {
    for (const int border : {1, 2, 3, 16, 18, 33}) {
        const cv::Mat plane = noise(101, 120, 9);
        const cv::Mat result = tapered(plane, border);
        const cv::Rect useful(border, border, 120 - 2 * border, 101 - 2 * border);
        EXPECT_TRUE(sameBits(result(useful), plane(useful))) << border;
    }
}

TEST(TileTaper, OppositeEdgesMeetSmoothly) {
    cv::Mat plane(128, 128, CV_32FC1);
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x) {
            plane.at<float>(y, x) = static_cast<float>(x + y) / 256.0F;
        }
    }
    const cv::Mat result = tapered(plane, 24);
    // The jump of one half has become the slope of the blur. The columns pass owns the corners.
    for (int i = 24; i < 104; ++i) {
        EXPECT_LT(std::abs(result.at<float>(0, i) - result.at<float>(127, i)), 0.06F);
        EXPECT_LT(std::abs(result.at<float>(i, 0) - result.at<float>(i, 127)), 0.06F);
    }
}

TEST(TileTaper, EveryPlaneIsTaperedOnItsOwn) {
    std::array<cv::Mat, 3> planes{noise(90, 90, 1), noise(90, 90, 2), noise(90, 90, 3)};
    const std::array<cv::Mat, 3> alone{tapered(planes[0], 18), tapered(planes[1], 18),
                                       tapered(planes[2], 18)};
    vel::CTileTaper taper;
    taper.taperBlock(planes, 18);
    for (std::size_t p = 0; p < 3; ++p) {
        EXPECT_TRUE(sameBits(planes[p], alone[p]));
    }
}

TEST(TileTaper, ObjectTapersTilesOfDifferentSizesInTurn) {
    vel::CTileTaper taper;
    for (const int size : {64, 300, 80}) {
        for (const int border : {16, 5}) {
            const cv::Mat plane = noise(size, size + 3, 6);
            std::array<cv::Mat, 1> planes{plane.clone()};
            taper.taperBlock(planes, border);
            EXPECT_TRUE(sameBits(planes[0], tapered(plane, border)));
        }
    }
}

TEST(TileTaper, ResultDoesNotDependOnTheNumberOfThreads) {
    std::array<cv::Mat, 3> expected{noise(512, 512, 1), noise(512, 512, 2), noise(512, 512, 3)};
    const std::array<cv::Mat, 3> loaded{expected[0].clone(), expected[1].clone(),
                                        expected[2].clone()};
    vel::CTileTaper taper;
    taper.taperBlock(expected, 46);
    vel::test::forThreadCounts([&] {
        std::array<cv::Mat, 3> planes{loaded[0].clone(), loaded[1].clone(), loaded[2].clone()};
        taper.taperBlock(planes, 46);
        for (std::size_t p = 0; p < 3; ++p) {
            EXPECT_TRUE(sameBits(planes[p], expected[p]));
        }
    });
}

TEST(TileTaper, PlaneSmallerThanItsEdgeStripStaysAsItIs) {
    // A border of 16 takes 25 rows or columns from each edge.
    for (const cv::Size size : {cv::Size(24, 64), {64, 24}, {1, 1}, {24, 24}}) {
        const cv::Mat plane = noise(size.height, size.width, 2);
        EXPECT_TRUE(sameBits(tapered(plane, 16), plane));
    }
    const cv::Mat plane = noise(40, 40, 2);
    for (const int border : {0, -1, 1000000000, 2147483647, -2147483647 - 1}) {
        EXPECT_TRUE(sameBits(tapered(plane, border), plane)) << border;
    }
}

TEST(TileTaper, OverlappingMarginsFollowTheReferenceToo) {
    const cv::Mat plane = noise(25, 27, 8);
    expectNear(tapered(plane, 16), reference(plane, 16));
}

TEST(TileTaper, WithoutABlockNothingHappens) {
    vel::CTileTaper taper;
    EXPECT_NO_THROW(taper.taperBlock({}, 16));
}

} // namespace
