#include "velimproclib/tiles/TileTaper.h"

#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

namespace {

using vel::test::sameBits;

using Plane = std::vector<std::vector<double>>;

cv::Mat noise(int rows, int columns, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    cv::Mat plane(rows, columns, CV_32FC1);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            plane.at<float>(y, x) = value(random);
        }
    }
    return plane;
}

cv::Mat tapered(const cv::Mat& plane, int border) {
    std::array<cv::Mat, 1> planes{plane.clone()};
    vel::CTileTaper taper;
    taper.taperBlock(planes, border);
    return planes[0];
}

/// Blurs along columns of a strip, reflecting at its ends without repeating the edge.
Plane blurDown(const Plane& strip, const std::vector<double>& kernel) {
    const int rows = static_cast<int>(strip.size());
    const int reach = static_cast<int>(kernel.size()) / 2;
    Plane result(strip.size(), std::vector<double>(strip[0].size()));
    for (int y = 0; y < rows; ++y) {
        for (int k = -reach; k <= reach; ++k) {
            const int from = cv::borderInterpolate(y + k, rows, cv::BORDER_REFLECT_101);
            for (std::size_t x = 0; x < strip[0].size(); ++x) {
                result[static_cast<std::size_t>(y)][x] +=
                    kernel[static_cast<std::size_t>(k + reach)] *
                    strip[static_cast<std::size_t>(from)][x];
            }
        }
    }
    return result;
}

Plane transposed(const Plane& plane) {
    Plane result(plane[0].size(), std::vector<double>(plane.size()));
    for (std::size_t y = 0; y < plane.size(); ++y) {
        for (std::size_t x = 0; x < plane[0].size(); ++x) {
            result[x][y] = plane[y][x];
        }
    }
    return result;
}

/// The rows pass as it is told, in double.
Plane referenceRows(Plane plane, int b) {
    const int side = 2 * (b / 2) + 3;
    const double sigma = 0.2 * side;
    const int e = b + side / 2;
    const int q = b / 4;
    std::vector<double> kernel;
    double sum = 0;
    for (int i = 0; i < side; ++i) {
        const double distance = i - side / 2;
        kernel.push_back(std::exp(-distance * distance / (2 * sigma * sigma)));
        sum += kernel.back();
    }
    for (double& tap : kernel) {
        tap /= sum;
    }
    Plane joined(plane.end() - e, plane.end());
    joined.insert(joined.end(), plane.begin(), plane.begin() + e);
    const Plane blurred = transposed(blurDown(transposed(blurDown(joined, kernel)), kernel));
    double alpha = 0;
    for (int i = 0; i < b; ++i) {
        std::vector<double>& near = plane[static_cast<std::size_t>(i)];
        std::vector<double>& far = plane[plane.size() - 1 - static_cast<std::size_t>(i)];
        for (std::size_t x = 0; x < near.size(); ++x) {
            near[x] = alpha * near[x] + (1 - alpha) * blurred[static_cast<std::size_t>(e + i)][x];
            far[x] = alpha * far[x] + (1 - alpha) * blurred[static_cast<std::size_t>(e - 1 - i)][x];
        }
        if (i > q) {
            alpha += 1.0 / (b - q);
        }
    }
    return plane;
}

Plane reference(const cv::Mat& plane, int b) {
    Plane rows(static_cast<std::size_t>(plane.rows));
    for (int y = 0; y < plane.rows; ++y) {
        rows[static_cast<std::size_t>(y)].assign(plane.ptr<float>(y),
                                                 plane.ptr<float>(y) + plane.cols);
    }
    return transposed(referenceRows(transposed(referenceRows(rows, b)), b));
}

void expectNear(const cv::Mat& plane, const Plane& expected) {
    for (int y = 0; y < plane.rows; ++y) {
        for (int x = 0; x < plane.cols; ++x) {
            ASSERT_NEAR(plane.at<float>(y, x),
                        expected[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)], 2e-6)
                << "row " << y << ", column " << x;
        }
    }
}

TEST(TileTaper, FollowsThePlainReferenceForEveryBorder) {
    for (const int border : {1, 2, 3, 4, 5, 7, 8, 16, 17, 18, 22}) {
        SCOPED_TRACE(border);
        const cv::Mat plane = noise(61, 70, static_cast<unsigned>(border));
        expectNear(tapered(plane, border), reference(plane, border));
    }
}

TEST(TileTaper, FollowsThePlainReferenceOnATileBlurredInParts) {
    const cv::Mat plane = noise(256, 600, 3);
    expectNear(tapered(plane, 20), reference(plane, 20));
}

TEST(TileTaper, PartsOfASeamComeOutAsTheSeamBlurredAsAWhole) {
    // The fully replaced rows of the rows pass, in columns that the columns pass leaves alone.
    const cv::Mat plane = noise(256, 600, 4);
    const int border = 16;
    const int edge = 25;
    cv::Mat joined;
    cv::vconcat(plane.rowRange(256 - edge, 256), plane.rowRange(0, edge), joined);
    cv::Mat blurred;
    cv::GaussianBlur(joined, blurred, {19, 19}, 3.8, 3.8, cv::BORDER_REFLECT_101);
    const cv::Mat result = tapered(plane, border);
    const cv::Range inside(border, 600 - border);
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(
            sameBits(result.row(i).colRange(inside), blurred.row(edge + i).colRange(inside)));
        EXPECT_TRUE(sameBits(result.row(255 - i).colRange(inside),
                             blurred.row(edge - 1 - i).colRange(inside)));
    }
}

TEST(TileTaper, WeightedSumsAreThoseOfMatrixExpressions) {
    const cv::Mat plane = noise(200, 200, 5);
    const int border = 16;
    const int edge = 25;
    cv::Mat joined;
    cv::vconcat(plane.rowRange(200 - edge, 200), plane.rowRange(0, edge), joined);
    cv::Mat blurred;
    cv::GaussianBlur(joined, blurred, {19, 19}, 3.8, 3.8, cv::BORDER_REFLECT_101);
    const cv::Mat result = tapered(plane, border);
    const cv::Range inside(border, 200 - border);
    float alpha = 0;
    for (int i = 0; i < border; ++i) {
        const double weight = static_cast<double>(alpha);
        const cv::Mat expected = weight * plane.row(i) + (1.0 - weight) * blurred.row(edge + i);
        EXPECT_TRUE(sameBits(result.row(i).colRange(inside), expected.colRange(inside))) << i;
        alpha += i > 4 ? 1.0F / 12.0F : 0.0F;
    }
}

TEST(TileTaper, WeightOfThePlaneGrowsEvenlyBehindTheReplacedRows) {
    struct Case {
        int border, edge, blurSide, row;
        double weight;
    };
    for (const Case& c :
         {Case{16, 25, 19, 0, 0}, Case{16, 25, 19, 5, 0}, Case{16, 25, 19, 6, 1.0 / 12},
          Case{16, 25, 19, 15, 10.0 / 12}, Case{18, 28, 21, 5, 0}, Case{18, 28, 21, 6, 1.0 / 14},
          Case{18, 28, 21, 17, 12.0 / 14}}) {
        cv::Mat plane(128, 128, CV_32FC1, cv::Scalar(0));
        plane.row(c.row).setTo(1);
        cv::Mat joined;
        cv::vconcat(plane.rowRange(128 - c.edge, 128), plane.rowRange(0, c.edge), joined);
        cv::Mat blurred;
        cv::GaussianBlur(joined, blurred, {c.blurSide, c.blurSide}, 0.2 * c.blurSide,
                         0.2 * c.blurSide, cv::BORDER_REFLECT_101);
        const double seam = blurred.at<float>(c.edge + c.row, 64);
        const double result = tapered(plane, c.border).at<float>(c.row, 64);
        EXPECT_NEAR((result - seam) / (1.0 - seam), c.weight, 1e-6) << c.border << ' ' << c.row;
    }
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
    // The jump of one half became the slope of the blur; corners belong to the columns pass.
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

TEST(TileTaper, ObjectServesTilesOfAnySizeOneAfterTheOther) {
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
