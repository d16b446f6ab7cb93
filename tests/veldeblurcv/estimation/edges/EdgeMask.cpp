#include "velimproclib/veldeblurcv/estimation/edges/EdgeMask.h"

#include "tests/support/digestOf.h"
#include "tests/support/MallocFails.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/sameBits.h"
#include "tests/support/textOf.h"
#include "tests/support/Threads.h"
#include "tests/veldeblurcv/estimation/SoftScene.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using vel::EdgeMask;
using vel::test::digestOf;
using vel::test::sameBits;
using vel::test::softScene;

using Bytes = cv::Mat_<std::uint8_t>;

cv::Mat maskOf(const cv::Mat& edge, int count, int side) {
    EdgeMask selection;
    cv::Mat mask;
    selection.compute(edge, mask, count, side);
    return mask;
}

TEST(EdgeMask, SelectionsAreThoseOfTheDigest) {
    const cv::Mat scene = softScene(64, 47);
    EXPECT_EQ(digestOf({maskOf(scene, 0, 3), maskOf(scene, 300, 3), maskOf(scene, 20000, 3)}),
              "F894926122D9CC59");
    EXPECT_EQ(digestOf({maskOf(scene, 0, 5), maskOf(scene, 300, 5), maskOf(scene, 20000, 9)}),
              "0053598754877490");
}

/// Vertical steps 16 columns apart. A step of 3 r grey levels has the response r in the two columns
/// beside it; inside the two-pixel ring these are 2 * (rows - 4) pixels per step.
Bytes stepsOf(std::vector<int> heights) {
    Bytes image(64, 16 * static_cast<int>(heights.size() + 1));
    int level = 0;
    for (std::size_t i = 0; i <= heights.size(); ++i) {
        image.colRange(16 * static_cast<int>(i), 16 * static_cast<int>(i + 1)).setTo(level);
        level += i < heights.size() ? heights[i] : 0;
    }
    return image;
}

/// Whether each step is selected, with the band of an 8-pixel margin.
std::vector<bool> selectedSteps(const cv::Mat& mask) {
    std::vector<bool> selected;
    for (int x = 16; x < mask.cols; x += 16) {
        const int pixels = cv::countNonZero(mask.colRange(x - 1, x + 1));
        EXPECT_TRUE(pixels == 0 || pixels == 2 * (mask.rows - 16)) << pixels;
        selected.push_back(pixels != 0);
    }
    return selected;
}

TEST(EdgeMask, ThresholdIsTheFirstBinAtWhichMorePixelsThanWantedAreCounted) {
    const Bytes steps = stepsOf({90, 60, 30}); // responses 30, 20 and 10, 120 pixels each
    using Selected = std::vector<bool>;
    EXPECT_EQ(selectedSteps(maskOf(steps, 0, 5)), (Selected{true, false, false}));
    EXPECT_EQ(selectedSteps(maskOf(steps, 119, 5)), (Selected{true, false, false}));
    EXPECT_EQ(selectedSteps(maskOf(steps, 120, 5)), (Selected{true, true, false}));
    EXPECT_EQ(selectedSteps(maskOf(steps, 239, 5)), (Selected{true, true, false}));
    EXPECT_EQ(selectedSteps(maskOf(steps, 240, 5)), (Selected{true, true, true}));
    EXPECT_EQ(selectedSteps(maskOf(steps, 360, 5)), (Selected{true, true, true}));
    EXPECT_EQ(selectedSteps(maskOf(steps, 2000000000, 5)), (Selected{true, true, true}));
}

TEST(EdgeMask, ResponsesBelowFourAreNeverSelected) {
    const Bytes steps = stepsOf({12, 9, 6}); // responses 4, 3 and 2
    for (const int count : {0, 119, 120, 250, 100000}) {
        EXPECT_EQ(selectedSteps(maskOf(steps, count, 5)), (std::vector<bool>{true, false, false}))
            << count;
    }
}

TEST(EdgeMask, SelectedPixelsKeepTheirResponse) {
    const cv::Mat mask = maskOf(stepsOf({90, 60}), 100000, 3);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 15), 30);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 16), 30);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 31), 20);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 17), 0);
}

/// Pixels that a line `width` pixels wide has selected.
int selectedOnALine(int width, bool isVertical, int side) {
    Bytes image(60, 60, std::uint8_t{50});
    (isVertical ? image.colRange(30, 30 + width) : image.rowRange(30, 30 + width)).setTo(200);
    return cv::countNonZero(maskOf(image, 100000, side));
}

TEST(EdgeMask, LinesThinnerThanHalfTheMedianAreNoise) {
    for (const bool isVertical : {false, true}) {
        EXPECT_EQ(selectedOnALine(1, isVertical, 3), 0);
        EXPECT_GT(selectedOnALine(2, isVertical, 3), 0);
        EXPECT_EQ(selectedOnALine(2, isVertical, 4), 0);
        EXPECT_GT(selectedOnALine(3, isVertical, 4), 0);
    }
}

TEST(EdgeMask, BandIsAsWideAsTheKernelAndAtLeastEight) {
    const cv::Mat edge = softScene(120, 110);
    for (const int side : {1, 7, 8, 9, 21, 54}) {
        const int band = std::max(side, 8);
        const cv::Mat mask = maskOf(edge, 1000000, side);
        cv::Mat outside = mask.clone();
        const cv::Rect inside(band, band, mask.cols - 2 * band, mask.rows - 2 * band);
        outside(inside).setTo(0);
        EXPECT_EQ(cv::countNonZero(outside), 0) << side;
        if (side < 20) {
            EXPECT_GT(cv::countNonZero(mask.row(band)), 0) << side;
            EXPECT_GT(cv::countNonZero(mask.row(mask.rows - 1 - band)), 0) << side;
            EXPECT_GT(cv::countNonZero(mask.col(band)), 0) << side;
            EXPECT_GT(cv::countNonZero(mask.col(mask.cols - 1 - band)), 0) << side;
        }
    }
}

TEST(EdgeMask, ImageSmallerThanTwoBandsHasNoSelectedPixel) {
    for (const cv::Size size :
         {cv::Size(16, 100), cv::Size(100, 15), cv::Size(5, 5), cv::Size(2, 3), cv::Size(1, 1)}) {
        const cv::Mat mask = maskOf(softScene(size.width, size.height), 100000, 5);
        EXPECT_EQ(mask.size(), size);
        EXPECT_EQ(cv::countNonZero(mask), 0);
    }
    EXPECT_EQ(cv::countNonZero(maskOf(softScene(60, 60), 100000, 1000)), 0);
}

TEST(EdgeMask, ImageWithoutAnEdgeHasNoSelectedPixel) {
    EXPECT_EQ(cv::countNonZero(maskOf(Bytes(60, 60, std::uint8_t{77}), 0, 5)), 0);
}

TEST(EdgeMask, EarlierImagesDoNotInfluenceTheSelection) {
    EdgeMask selection;
    const cv::Mat edge = softScene(64, 47);
    cv::Mat mask;
    selection.compute(softScene(90, 90), mask, 5, 9);
    selection.compute(edge, mask, 300, 5);
    EXPECT_TRUE(sameBits(mask, maskOf(edge, 300, 5)));
    // An image without counted pixels clears the histogram as well.
    selection.compute(softScene(3, 3), mask, 0, 1);
    EXPECT_EQ(cv::countNonZero(mask), 0);
}

TEST(EdgeMask, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat edge = softScene(120, 110);
    const cv::Mat expected = maskOf(edge, 500, 5);
    vel::test::forThreadCounts([&] { EXPECT_TRUE(sameBits(maskOf(edge, 500, 5), expected)); });
}

TEST(EdgeMask, HistogramWithoutMemoryIsATextFailure) {
#ifdef _WIN32
    GTEST_SKIP() << "a statically linked C++ runtime cannot throw while malloc fails";
#endif
    std::string text;
    {
        const vel::test::MallocFails noMemory;
        text = vel::test::textOf([] { const EdgeMask selection; });
    }
    EXPECT_EQ(text, "CBlurEst::CBlurEst - ippsMalloc_32s failed");
}

} // namespace
