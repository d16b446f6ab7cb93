#include "velimproclib/veldeblurcv/estimation/BlurEst.h"

#include "tests/support/DrawnScene.h"
#include "tests/support/MallocFails.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/ProgressListener.h"
#include "tests/support/sameBits.h"
#include "tests/support/textOf.h"
#include "tests/support/Threads.h"
#include "velimproclib/tiles/BlockProcP1.h"
#include "velimproclib/tiles/TileTaper.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"
#include "velimproclib/veldeblurcv/estimation/EdgePrediction.h"
#include "velimproclib/veldeblurcv/estimation/estKernel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <omp.h>
#include <opencv2/imgproc.hpp>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace {

using vel::CBlurEst;
using vel::test::blurredWith;
using vel::test::drawnScene;
using vel::test::Listener;
using vel::test::sameBits;
using vel::test::textOf;

using Bytes = cv::Mat_<std::uint8_t>;

cv::Mat byteScene(int width, int height) {
    return drawnScene(cv::Size(width, height), CV_8UC1);
}

cv::Mat emptyKernel(int width, int height) {
    return cv::Mat(height, width, CV_32FC1, cv::Scalar(-3.0));
}

/// A disc of `radius` pixels, not smoothed, sum 1.
cv::Mat discKernel(int side, double radius) {
    cv::Mat kernel(side, side, CV_32FC1);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double distance = std::hypot(x - side / 2, y - side / 2);
            kernel.at<float>(y, x) =
                static_cast<float>(std::clamp(radius + 0.5 - distance, 0.0, 1.0));
        }
    }
    return kernel / cv::sum(kernel)[0];
}

bool isNaNThroughout(const cv::Mat& kernel) {
    return cv::countNonZero(kernel == kernel) == 0;
}

/// A kernel as the estimator leaves it when it found one.
void expectCleanKernel(const cv::Mat& kernel) {
    double least = -1.0;
    cv::minMaxLoc(kernel, &least);
    EXPECT_GE(least, 0.0);
    EXPECT_NEAR(cv::sum(kernel)[0], 1.0, 1e-5);
}

// ---- set-up ---------------------------------------------------------------------------------

struct Pyramid {
    std::vector<int> kernelSides;
    std::vector<cv::Size> images;
};

Pyramid pyramidOf(cv::Size image, cv::Size kernel) {
    CBlurEst estimator;
    EXPECT_EQ(estimator.setup(cv::Mat(image, CV_8UC1, cv::Scalar(9)),
                              emptyKernel(kernel.width, kernel.height), nullptr),
              1);
    Pyramid pyramid;
    for (std::size_t level = 0; level <= static_cast<std::size_t>(estimator.m_pyrLvls); ++level) {
        const cv::Mat& levelKernel = estimator.m_kPyr[level];
        EXPECT_EQ(levelKernel.type(), CV_32FC1);
        EXPECT_EQ(estimator.m_imPyr[level].type(), CV_8UC1);
        EXPECT_EQ(estimator.m_lvlIters[level], 3);
        if (level > 0) {
            EXPECT_EQ(levelKernel.rows, levelKernel.cols);
        }
        pyramid.kernelSides.push_back(std::max(levelKernel.cols, levelKernel.rows));
        pyramid.images.push_back(estimator.m_imPyr[level].size());
    }
    for (auto level = static_cast<std::size_t>(estimator.m_pyrLvls + 1);
         level < estimator.m_imPyr.size(); ++level) {
        EXPECT_TRUE(estimator.m_imPyr[level].empty());
        EXPECT_TRUE(estimator.m_kPyr[level].empty());
    }
    return pyramid;
}

TEST(BlurEst, StartsWithItsFixedSettings) {
    const CBlurEst estimator;
    EXPECT_EQ(estimator.m_psfLambda, 0.001f);
    EXPECT_EQ(estimator.m_psfW0, 0.0f);
    EXPECT_EQ(estimator.m_psfW1, 1.0f);
    EXPECT_EQ(estimator.m_psfW2, 1.0f);
    EXPECT_EQ(estimator.m_edgeGain, 1.0f);
    EXPECT_EQ(estimator.m_edgeSmooth, 0.0f);
    EXPECT_EQ(estimator.m_maskPerTap, 2000);
    EXPECT_EQ(estimator.m_kFloor, 0.05f);
}

TEST(BlurEst, KernelSidesHalveDownToThree) {
    const Pyramid pyramid = pyramidOf({400, 300}, {31, 31});
    EXPECT_EQ(pyramid.kernelSides, (std::vector<int>{31, 15, 7, 3}));
    EXPECT_EQ(pyramid.images, (std::vector<cv::Size>{{400, 300}, {200, 150}, {100, 75}, {50, 38}}));
    EXPECT_EQ(pyramidOf({400, 300}, {29, 29}).kernelSides, (std::vector<int>{29, 15, 7, 3}));
    EXPECT_EQ(pyramidOf({400, 300}, {5, 5}).kernelSides, (std::vector<int>{5, 3}));
    EXPECT_EQ(pyramidOf({400, 300}, {11, 11}).kernelSides, (std::vector<int>{11, 5, 3}));
    // Halves are cut before they are halved again: 4 makes no level, although half of it is 2.
    EXPECT_EQ(pyramidOf({400, 300}, {4, 4}).kernelSides, (std::vector<int>{4}));
    EXPECT_EQ(pyramidOf({400, 300}, {8, 8}).kernelSides, (std::vector<int>{8, 3}));
}

TEST(BlurEst, KernelsOfAtMostThreePixelsHaveOneLevel) {
    for (const int side : {1, 2, 3}) {
        EXPECT_EQ(pyramidOf({100, 100}, {side, side}).kernelSides, std::vector<int>{side});
    }
}

TEST(BlurEst, LargerSideOfANonSquareKernelMakesTheLevels) {
    EXPECT_EQ(pyramidOf({400, 400}, {3, 15}).kernelSides, (std::vector<int>{15, 7, 3}));
    EXPECT_EQ(pyramidOf({400, 400}, {15, 1}).kernelSides, (std::vector<int>{15, 7, 3}));
}

TEST(BlurEst, FirstImageBelowThirtyTwoPixelsIsTheCoarsest) {
    EXPECT_EQ(pyramidOf({128, 128}, {63, 63}).images,
              (std::vector<cv::Size>{{128, 128}, {64, 64}, {32, 32}, {16, 16}}));
    EXPECT_EQ(pyramidOf({500, 62}, {63, 63}).images, (std::vector<cv::Size>{{500, 62}, {250, 31}}));
    EXPECT_EQ(pyramidOf({61, 500}, {63, 63}).images.size(), 2u);
    EXPECT_EQ(pyramidOf({1, 1}, {63, 63}).images, (std::vector<cv::Size>{{1, 1}, {1, 1}}));
}

TEST(BlurEst, ThereAreNeverMoreThanEightLevels) {
    EXPECT_EQ(pyramidOf({9000, 4100}, {511, 1}).kernelSides,
              (std::vector<int>{511, 255, 127, 63, 31, 15, 7, 3}));
    EXPECT_EQ(pyramidOf({9000, 4100}, {1023, 1}).kernelSides,
              (std::vector<int>{1023, 511, 255, 127, 63, 31, 15, 7}));
}

TEST(BlurEst, FinestLevelSharesTheCallersImageAndKernel) {
    const cv::Mat image = byteScene(70, 60);
    const cv::Mat kernel = emptyKernel(5, 5);
    CBlurEst estimator;
    estimator.setup(image, kernel, nullptr);
    EXPECT_EQ(estimator.m_imPyr[0].data, image.data);
    EXPECT_EQ(estimator.m_kPyr[0].data, kernel.data);
}

TEST(BlurEst, OtherImageTypesAndKernelsWithoutDataAreRefused) {
    CBlurEst estimator;
    for (const int type : {CV_8UC3, CV_16UC1, CV_32FC1, CV_8SC1}) {
        EXPECT_EQ(textOf([&] { estimator.setup(cv::Mat(9, 9, type), emptyKernel(3, 3), nullptr); }),
                  "CBlurEst:setup - imB is wrong type");
    }
    EXPECT_EQ(textOf([&] { estimator.setup(cv::Mat(9, 9, CV_8UC1), cv::Mat(), nullptr); }),
              "CBlurEst:setup - kernel.empty()");
    EXPECT_EQ(textOf([&] { estimator.setup(cv::Mat(9, 9, CV_32FC1), cv::Mat(), nullptr); }),
              "CBlurEst:setup - imB is wrong type");
}

TEST(BlurEst, HistogramWithoutMemoryIsATextFailure) {
#ifdef _WIN32
    GTEST_SKIP() << "linked statically, the C++ runtime has its malloc taken away as well";
#endif
    std::string text;
    {
        const vel::test::MallocFails noMemory;
        text = textOf([] { const CBlurEst estimator; });
    }
    EXPECT_EQ(text, "CBlurEst::CBlurEst - ippsMalloc_32s failed");
}

TEST(BlurEst, KernelBeyondMemoryIsAnException) {
    CBlurEst estimator;
    estimator.setup(cv::Mat(40, 40, CV_8UC1, cv::Scalar(0)), emptyKernel(4001, 3001), nullptr);
    EXPECT_ANY_THROW(estimator.estimate(0.0f));
}

// ---- mask -----------------------------------------------------------------------------------

int median(std::vector<int> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Median along rows or columns over `2 * reach + 1` pixels, inside a ring of `reach`.
void plainMedian(const Bytes& src, Bytes& dst, int reach, bool alongRows) {
    for (int y = reach; y < src.rows - reach; ++y) {
        for (int x = reach; x < src.cols - reach; ++x) {
            std::vector<int> values;
            for (int i = -reach; i <= reach; ++i) {
                values.push_back(alongRows ? src(y, x + i) : src(y + i, x));
            }
            dst(y, x) = static_cast<std::uint8_t>(median(values));
        }
    }
}

/// Distance of every pixel inside the one-pixel ring from the mean of its neighbourhood.
Bytes plainResponse(const Bytes& smoothed) {
    Bytes response(smoothed.size(), std::uint8_t{0});
    for (int y = 1; y + 1 < smoothed.rows; ++y) {
        for (int x = 1; x + 1 < smoothed.cols; ++x) {
            int sum = 5;
            for (int i = 0; i < 9; ++i) {
                sum += smoothed(y - 1 + i / 3, x - 1 + i % 3);
            }
            response(y, x) =
                static_cast<std::uint8_t>(std::abs(smoothed(y, x) - (sum * 455 >> 12)));
        }
    }
    return response;
}

/// The weakest response that is kept: responses are counted inside the two-pixel ring.
int plainThreshold(const Bytes& response, int count) {
    for (int threshold = 255; threshold > 4; --threshold) {
        int reached = 0;
        for (int y = 2; y < response.rows - 2; ++y) {
            for (int x = 2; x < response.cols - 2; ++x) {
                reached += response(y, x) >= threshold ? 1 : 0;
            }
        }
        if (reached > count) {
            return threshold;
        }
    }
    return 4;
}

Bytes plainMask(const Bytes& edge, int count, int side) {
    const int reach = side <= 3 ? 1 : 2;
    Bytes smoothed = edge.clone();
    Bytes between(edge.size(), std::uint8_t{0});
    plainMedian(smoothed, between, reach, true);
    plainMedian(between, smoothed, reach, false);
    Bytes mask = plainResponse(smoothed);
    const int threshold = plainThreshold(mask, count);
    const int band = std::max(side, 8);
    for (int y = 0; y < mask.rows; ++y) {
        for (int x = 0; x < mask.cols; ++x) {
            const int toEdge = std::min({x, y, mask.cols - 1 - x, mask.rows - 1 - y});
            if (mask(y, x) < threshold || toEdge < band) {
                mask(y, x) = 0;
            }
        }
    }
    return mask;
}

cv::Mat maskOf(const cv::Mat& edge, int count, int side) {
    CBlurEst estimator;
    cv::Mat mask;
    estimator.computeMask(edge, mask, count, side);
    return mask;
}

TEST(BlurEstMask, EqualsThePlainSelection) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 3}, {5, 5}, {17, 40}, {64, 47}}) {
        for (const int side : {1, 3, 5, 9}) {
            for (const int count : {0, 10, 300, 20000}) {
                const cv::Mat edge = byteScene(width, height);
                EXPECT_TRUE(sameBits(maskOf(edge, count, side), plainMask(edge, count, side)))
                    << width << " by " << height << ", side " << side << ", count " << count;
            }
        }
    }
}

TEST(BlurEstMask, NoiseIsSelectedAsThePlainSelectionDoes) {
    Bytes edge(50, 61);
    cv::RNG random(4);
    random.fill(edge, cv::RNG::UNIFORM, 0, 256);
    for (const int side : {3, 5}) {
        for (const int count : {0, 50, 900}) {
            EXPECT_TRUE(sameBits(maskOf(edge, count, side), plainMask(edge, count, side)));
        }
    }
}

/// Vertical steps 16 columns apart. A step of 3 r grey levels answers with r in the two columns
/// beside it; inside the two-pixel ring that makes 2 * (rows - 4) pixels a step.
Bytes stepsOf(std::vector<int> heights) {
    Bytes image(64, 16 * static_cast<int>(heights.size() + 1));
    int level = 0;
    for (std::size_t i = 0; i <= heights.size(); ++i) {
        image.colRange(16 * static_cast<int>(i), 16 * static_cast<int>(i + 1)).setTo(level);
        level += i < heights.size() ? heights[i] : 0;
    }
    return image;
}

/// For every step whether its response is selected, with the band of an 8-pixel margin.
std::vector<bool> selectedSteps(const cv::Mat& mask) {
    std::vector<bool> selected;
    for (int x = 16; x < mask.cols; x += 16) {
        const int pixels = cv::countNonZero(mask.colRange(x - 1, x + 1));
        EXPECT_TRUE(pixels == 0 || pixels == 2 * (mask.rows - 16)) << pixels;
        selected.push_back(pixels != 0);
    }
    return selected;
}

TEST(BlurEstMask, ThresholdIsTheFirstBinAtWhichMorePixelsThanWantedAreCounted) {
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

TEST(BlurEstMask, ResponsesBelowFourAreNeverSelected) {
    const Bytes steps = stepsOf({12, 9, 6}); // responses 4, 3 and 2
    for (const int count : {0, 119, 120, 250, 100000}) {
        EXPECT_EQ(selectedSteps(maskOf(steps, count, 5)), (std::vector<bool>{true, false, false}))
            << count;
    }
}

TEST(BlurEstMask, SelectedPixelsKeepTheirResponse) {
    const cv::Mat mask = maskOf(stepsOf({90, 60}), 100000, 3);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 15), 30);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 16), 30);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 31), 20);
    EXPECT_EQ(mask.at<std::uint8_t>(30, 17), 0);
}

TEST(BlurEstMask, BandIsAsWideAsTheKernelAndAtLeastEight) {
    const cv::Mat edge = byteScene(120, 110);
    for (const int side : {1, 7, 8, 9, 21, 54}) {
        const int band = std::max(side, 8);
        const cv::Mat mask = maskOf(edge, 1000000, side);
        cv::Mat outside = mask.clone();
        const cv::Rect inside(band, band, mask.cols - 2 * band, mask.rows - 2 * band);
        outside(inside).setTo(0);
        EXPECT_EQ(cv::countNonZero(outside), 0) << side;
        if (side < 20) {
            EXPECT_GT(cv::countNonZero(mask.row(band)), 0) << side;
            EXPECT_GT(cv::countNonZero(mask.col(mask.cols - 1 - band)), 0) << side;
        }
    }
}

TEST(BlurEstMask, ImageSmallerThanTwoBandsSelectsNothing) {
    for (const cv::Size size : {cv::Size(16, 100), cv::Size(100, 15), cv::Size(1, 1)}) {
        EXPECT_EQ(cv::countNonZero(maskOf(drawnScene(size, CV_8UC1), 100000, 5)), 0);
    }
    EXPECT_EQ(cv::countNonZero(maskOf(byteScene(60, 60), 100000, 1000)), 0);
}

TEST(BlurEstMask, ImageWithoutAnEdgeSelectsNothing) {
    EXPECT_EQ(cv::countNonZero(maskOf(Bytes(60, 60, std::uint8_t{77}), 0, 5)), 0);
}

TEST(BlurEstMask, EarlierImagesLeaveNoTrace) {
    CBlurEst estimator;
    const cv::Mat edge = byteScene(64, 47);
    cv::Mat mask;
    estimator.computeMask(byteScene(90, 90), mask, 5, 9);
    estimator.computeMask(edge, mask, 300, 5);
    EXPECT_TRUE(sameBits(mask, plainMask(edge, 300, 5)));
    // The histogram of an image without counted pixels is empty.
    estimator.computeMask(byteScene(3, 3), mask, 0, 1);
    EXPECT_EQ(cv::countNonZero(mask), 0);
}

// ---- deconvolution of a level ---------------------------------------------------------------

TEST(BlurEstDeconvolution, BlockSideFollowsTheLargerSide) {
    EXPECT_EQ(CBlurEst::deconvBlockSize(1, 1), 256);
    EXPECT_EQ(CBlurEst::deconvBlockSize(256, 256), 256);
    EXPECT_EQ(CBlurEst::deconvBlockSize(257, 10), 512);
    EXPECT_EQ(CBlurEst::deconvBlockSize(256, 300), 512);
    EXPECT_EQ(CBlurEst::deconvBlockSize(512, 512), 512);
    EXPECT_EQ(CBlurEst::deconvBlockSize(513, 1), 1024);
    EXPECT_EQ(CBlurEst::deconvBlockSize(3, 1024), 1024);
    EXPECT_EQ(CBlurEst::deconvBlockSize(1025, 10), 512);
    EXPECT_EQ(CBlurEst::deconvBlockSize(10, 6000), 512);
}

cv::Mat deconvolved(const cv::Mat& in, const cv::Mat& kernel, int mode = 2) {
    CBlurEst estimator;
    cv::Mat out(in.size(), CV_8UC1, cv::Scalar(99));
    estimator.deconvLevel(mode, in, kernel, out);
    return out;
}

TEST(BlurEstDeconvolution, ModeZeroCopies) {
    const cv::Mat in = byteScene(50, 40);
    EXPECT_TRUE(sameBits(deconvolved(in, discKernel(5, 2.0), 0), in));
}

/// An image of one block: replicated to 256 by 256 with margins of 16, tapered, restored and
/// rounded.
cv::Mat plainBlockDeconvolution(const cv::Mat& in, const cv::Mat& kernel) {
    cv::Mat block;
    cv::copyMakeBorder(in, block, 16, 240 - in.rows, 16, 240 - in.cols, cv::BORDER_REPLICATE);
    block.convertTo(block, CV_32F);
    for (auto pixel = block.begin<float>(); pixel != block.end<float>(); ++pixel) {
        *pixel *= 0.003921569f;
    }
    vel::CTileTaper().taperBlock(std::span(&block, 1), 16);
    vel::CDeconvHL deconv;
    deconv.setup(kernel, cv::Point(kernel.cols / 2, kernel.rows / 2), cv::Size(256, 256), 2000.0f,
                 0.5f, true);
    cv::Mat restored(block.size(), CV_32FC1);
    deconv.Proc(block, restored);
    Bytes out(in.size());
    for (int y = 0; y < in.rows; ++y) {
        for (int x = 0; x < in.cols; ++x) {
            const float level = restored.at<float>(16 + y, 16 + x) * 255.0f;
            out(y, x) = static_cast<std::uint8_t>(std::clamp(std::nearbyint(level), 0.0f, 255.0f));
        }
    }
    return out;
}

TEST(BlurEstDeconvolution, OneBlockIsReplicatedTaperedRestoredAndRounded) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(90, 61), cv::Size(224, 224)}) {
        const cv::Mat in = drawnScene(size, CV_8UC1);
        for (const cv::Mat& kernel : {discKernel(5, 2.0), discKernel(1, 1.0)}) {
            EXPECT_TRUE(sameBits(deconvolved(in, kernel), plainBlockDeconvolution(in, kernel)))
                << size;
        }
    }
}

TEST(BlurEstDeconvolution, SeveralBlocksRestoreTheWholeImage) {
    const cv::Mat kernel = discKernel(7, 2.5);
    const cv::Mat sharp = byteScene(256, 256);
    const cv::Mat soft = blurredWith(sharp, kernel);
    const cv::Mat restored = deconvolved(soft, kernel);
    EXPECT_GT(cv::PSNR(restored, sharp), cv::PSNR(soft, sharp) + 4.0);
    // No seam where the four blocks overlap.
    const cv::Rect seams[] = {{26, 0, 200, 256}, {0, 26, 256, 200}};
    for (const cv::Rect& seam : seams) {
        EXPECT_GT(cv::PSNR(restored(seam), sharp(seam)), cv::PSNR(soft(seam), sharp(seam)) + 4.0);
    }
}

TEST(BlurEstDeconvolution, LongImageIsCutIntoBlocksThatOverlapByEight) {
    // One pixel more or less of overlap, and one of these widths takes another number of blocks.
    for (const int width : {1494, 1496}) {
        const cv::Mat in = byteScene(width, 9);
        const cv::Mat kernel = discKernel(5, 2.0);
        cv::Mat expected(in.size(), CV_8UC1);
        vel::CBlockProcP1 blocks;
        blocks.init(in, expected, 512, 512, false, 8, 16, 1);
        EXPECT_EQ(blocks.blocksAcross(), width == 1494 ? 3 : 4);
        vel::CDeconvHL deconv;
        deconv.setup(kernel, cv::Point(2, 2), cv::Size(512, 512), 2000.0f, 0.5f, true);
        cv::Mat restored(512, 512, CV_32FC1);
        for (cv::Mat* block = blocks.nextBlock(); block != nullptr; block = blocks.nextBlock()) {
            deconv.Proc(*block, restored);
            restored.copyTo(*block);
            blocks.doneABlock();
        }
        EXPECT_TRUE(sameBits(deconvolved(in, kernel), expected)) << width;
    }
}

TEST(BlurEstDeconvolution, EveryBlockTellsItsPartOfAStep) {
    const cv::Mat in = byteScene(1496, 9);
    const cv::Mat kernel = discKernel(1, 1.0);
    Listener listener;
    ProgressRecord account = listener.record(1006, 1006);
    vel::CProgressSpan span(&account);
    CBlurEst estimator;
    estimator.setup(in, emptyKernel(1, 1), &span);
    ASSERT_EQ(span.begin(1.0f, 2), 503);
    listener.heard.clear();
    cv::Mat out(in.size(), CV_8UC1);
    estimator.deconvLevel(2, in, kernel, out);
    EXPECT_EQ(listener.heard, (std::vector<int32_t>{125, 250, 375, 500}));
    // What the parts leave of the step is passed silently.
    EXPECT_EQ(account.current, 503);
    estimator.deconvLevel(0, in, kernel, out);
    EXPECT_EQ(listener.heard.size(), 4U);
    EXPECT_EQ(account.current, 503);
}

TEST(BlurEstDeconvolution, KernelOfNotANumberEntriesGivesBlack) {
    const cv::Mat kernel(5, 5, CV_32FC1, cv::Scalar(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(cv::countNonZero(deconvolved(byteScene(60, 40), kernel)), 0);
}

TEST(BlurEstDeconvolution, KernelLargerThanImageAndBlockIsSurvived) {
    const cv::Mat kernel(301, 259, CV_32FC1, cv::Scalar(1.0 / (301 * 259)));
    EXPECT_EQ(deconvolved(byteScene(9, 7), kernel).size(), cv::Size(9, 7));
}

TEST(BlurEstDeconvolution, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat in = byteScene(256, 150);
    const cv::Mat kernel = discKernel(7, 2.5);
    const cv::Mat expected = deconvolved(in, kernel);
    vel::test::forThreadCounts([&] { EXPECT_TRUE(sameBits(deconvolved(in, kernel), expected)); });
}

// ---- kernel of a level ----------------------------------------------------------------------

TEST(BlurEstKernel, IsSolvedAndCleanedWithTheEstimatorsSettings) {
    const cv::Mat sharp = byteScene(90, 80);
    const cv::Mat blurred = blurredWith(sharp, discKernel(5, 2.0));
    const cv::Mat mask(sharp.size(), CV_8UC1, cv::Scalar(1));
    const auto expected = [&](float lambda, float floor) {
        cv::Mat kernel = emptyKernel(5, 7);
        vel::estKernel(sharp, mask, blurred, kernel, {lambda, 0.0f, 1.0f, 1.0f, floor}, nullptr);
        return kernel;
    };
    CBlurEst estimator;
    cv::Mat kernel = emptyKernel(5, 7);
    EXPECT_EQ(estimator.estKernel(sharp, mask, blurred, kernel), 1);
    EXPECT_TRUE(sameBits(kernel, expected(0.001f, 0.05f)));
    estimator.m_psfLambda = 50.0f;
    estimator.m_kFloor = 0.4f;
    estimator.estKernel(sharp, mask, blurred, kernel);
    EXPECT_TRUE(sameBits(kernel, expected(50.0f, 0.4f)));
    EXPECT_FALSE(sameBits(kernel, expected(0.001f, 0.4f)));
    EXPECT_FALSE(sameBits(kernel, expected(50.0f, 0.05f)));
}

// ---- levels ---------------------------------------------------------------------------------

/// `edge` without its two-pixel ring, smoothed by five integer taps, rows first. Columns reach into
/// the ring's rows, where `latent` stands.
Bytes plainSoftened(const Bytes& edge, const Bytes& latent, double sigma) {
    std::array<int, 5> taps;
    int divisor = 0;
    for (int i = -2; i <= 2; ++i) {
        const int tap = static_cast<int>(std::exp(-0.5 * i * i / (sigma * sigma)) * 4096.0 + 0.49);
        taps[static_cast<std::size_t>(i + 2)] = tap;
        divisor += tap;
    }
    const auto filtered = [&](const Bytes& src, int y, int x, int dy, int dx) {
        int sum = 0;
        for (int i = -2; i <= 2; ++i) {
            sum += taps[static_cast<std::size_t>(i + 2)] * src(y + i * dy, x + i * dx);
        }
        return static_cast<std::uint8_t>((2 * sum + divisor) / (2 * divisor));
    };
    Bytes between = latent.clone();
    Bytes softened = edge.clone();
    const cv::Rect inside(2, 2, edge.cols - 4, edge.rows - 4);
    for (int y = inside.y; y < inside.br().y; ++y) {
        for (int x = inside.x; x < inside.br().x; ++x) {
            between(y, x) = filtered(edge, y, x, 0, 1);
        }
    }
    for (int y = inside.y; y < inside.br().y; ++y) {
        for (int x = inside.x; x < inside.br().x; ++x) {
            softened(y, x) = filtered(between, y, x, 1, 0);
        }
    }
    return softened;
}

struct PlainLevel {
    cv::Mat kernel;
    Bytes latent;
};

/// One level's three iterations, from the schedule written out. Only the settings of `estimator`
/// are read.
PlainLevel plainLevel(const CBlurEst& estimator, int level, const cv::Mat& blurred, Bytes latent,
                      cv::Size kernelSize) {
    constexpr float kColors[] = {80.0f, 40.0f,        80.0f / 3.0f, 20.0f,
                                 16.0f, 80.0f / 6.0f, 80.0f / 7.0f, 10.0f};
    constexpr float kFresh[] = {0.49975014f, 0.9990011f, 1.0f};
    const int side = std::max(kernelSize.width, kernelSize.height);
    const int radius = (side - 1) / 2;
    const bool coarsest = level == estimator.m_pyrLvls;
    float space = !coarsest && radius > 1 ? 0.9f * static_cast<float>(radius) : 1.0f;
    float color = kColors[level];
    CBlurEst stages;
    PlainLevel result{cv::Mat(kernelSize, CV_32FC1), {}};
    cv::Mat mask;
    for (int r = 0; r < 3; ++r) {
        const bool last = level == 0 && r == 2;
        cv::Mat edge;
        vel::estEdge(latent, edge, 5, color, space, 1);
        if (r == 0) {
            stages.computeMask(edge, mask, estimator.m_maskPerTap * side, side);
        }
        color = std::max(6.0f, color * estimator.m_edgeGain);
        space = std::max(0.5f, space * space);
        if (last && estimator.m_edgeSmooth > 0.1f) {
            edge = plainSoftened(edge, latent, static_cast<double>(estimator.m_edgeSmooth));
        }
        stages.estKernel(edge, mask, blurred, result.kernel);
        cv::Mat fresh(blurred.size(), CV_8UC1);
        stages.deconvLevel(last ? 0 : 2, blurred, result.kernel, fresh);
        for (int y = 0; y < latent.rows; ++y) {
            for (int x = 0; x < latent.cols; ++x) {
                const float share = kFresh[r] * static_cast<float>(fresh.at<std::uint8_t>(y, x));
                const double rest = (1.0 - static_cast<double>(kFresh[r])) * latent(y, x);
                latent(y, x) = static_cast<std::uint8_t>(static_cast<double>(share) + rest);
            }
        }
    }
    result.latent = latent;
    return result;
}

/// Runs all levels and holds each against the schedule written out.
void expectPlainLevels(CBlurEst& estimator) {
    PlainLevel expected;
    for (int level = estimator.m_pyrLvls; level >= 0; --level) {
        const auto index = static_cast<std::size_t>(level);
        const cv::Mat image = estimator.m_imPyr[index].clone();
        Bytes latent = image.clone();
        if (level < estimator.m_pyrLvls) {
            cv::pyrUp(expected.latent, latent, image.size());
        }
        expected = plainLevel(estimator, level, image, latent, estimator.m_kPyr[index].size());
        estimator.estimateLvl(level);
        EXPECT_FALSE(isNaNThroughout(expected.kernel)) << level;
        EXPECT_TRUE(sameBits(estimator.m_kPyr[index], expected.kernel)) << level;
        EXPECT_TRUE(sameBits(estimator.m_imPyr[index], level > 0 ? expected.latent : image));
    }
}

cv::Mat blurredScene(int width, int height) {
    return blurredWith(byteScene(width, height), discKernel(7, 2.5));
}

TEST(BlurEstLevel, EqualsTheScheduleWrittenOutOnEveryLevel) {
    for (const float strength : {0.0f, 0.7f}) {
        CBlurEst estimator;
        estimator.setup(blurredScene(150, 131), emptyKernel(7, 11), nullptr);
        ASSERT_EQ(estimator.m_pyrLvls, 2);
        estimator.m_edgeSmooth = strength;
        expectPlainLevels(estimator);
    }
}

TEST(BlurEstLevel, CoarsestLevelOfASmallImageKeepsTheNarrowReachForALargeKernel) {
    CBlurEst estimator;
    estimator.setup(blurredScene(62, 60), emptyKernel(15, 15), nullptr);
    ASSERT_EQ(estimator.m_pyrLvls, 1);
    ASSERT_EQ(estimator.m_kPyr[1].size(), cv::Size(7, 7));
    expectPlainLevels(estimator);
}

TEST(BlurEstLevel, PixelsAreKeptInProportionToTheKernelsSide) {
    CBlurEst estimator;
    estimator.setup(blurredScene(150, 131), emptyKernel(5, 7), nullptr);
    // So few that the strongest response of all decides.
    estimator.m_maskPerTap = 40;
    expectPlainLevels(estimator);
}

TEST(BlurEstLevel, GainMovesTheReachInGreyLevelsDownToSix) {
    for (const float gain : {0.5f, 0.01f}) {
        CBlurEst estimator;
        estimator.setup(blurredScene(150, 131), emptyKernel(5, 5), nullptr);
        estimator.m_edgeGain = gain;
        expectPlainLevels(estimator);
    }
}

TEST(BlurEstLevel, EveryLevelStartsWithAReachOfItsOwn) {
    const cv::Mat blurred = blurredScene(90, 80);
    cv::Mat before;
    for (int level = 1; level < CBlurEst::kMostLevels; ++level) {
        const auto index = static_cast<std::size_t>(level);
        CBlurEst estimator;
        estimator.m_pyrLvls = level;
        estimator.m_imPyr[index] = blurred.clone();
        estimator.m_kPyr[index] = emptyKernel(3, 3);
        const PlainLevel expected = plainLevel(estimator, level, blurred, blurred.clone(), {3, 3});
        estimator.estimateLvl(level);
        EXPECT_TRUE(sameBits(estimator.m_kPyr[index], expected.kernel)) << level;
        EXPECT_TRUE(sameBits(estimator.m_imPyr[index], expected.latent)) << level;
        EXPECT_FALSE(sameBits(estimator.m_kPyr[index], before)) << level;
        before = estimator.m_kPyr[index];
    }
}

TEST(BlurEstEstimate, KernelOfOnePixelIsOne) {
    CBlurEst estimator;
    estimator.setup(byteScene(90, 80), emptyKernel(1, 1), nullptr);
    EXPECT_EQ(estimator.estimate(0.0f), 1);
    EXPECT_EQ(estimator.m_pyrLvls, 0);
    EXPECT_EQ(estimator.m_kPyr[0].at<float>(0, 0), 1.0f);
}

TEST(BlurEstEstimate, WalksFromTheCoarsestLevelToTheFinest) {
    const cv::Mat blurred = blurredScene(150, 131);
    CBlurEst whole;
    const cv::Mat kernel = emptyKernel(7, 7);
    whole.setup(blurred, kernel, nullptr);
    EXPECT_EQ(whole.estimate(0.5f), 1);
    EXPECT_EQ(whole.m_edgeSmooth, 0.5f);
    CBlurEst stepwise;
    stepwise.setup(blurred, emptyKernel(7, 7), nullptr);
    stepwise.m_edgeSmooth = 0.5f;
    for (int level = stepwise.m_pyrLvls; level >= 0; --level) {
        stepwise.estimateLvl(level);
    }
    EXPECT_TRUE(sameBits(kernel, stepwise.m_kPyr[0]));
    expectCleanKernel(kernel);
}

/// The counter at the beginnings of shares: only there a call is one ahead of it.
struct Shares {
    ProgressRecord account;
    std::vector<int32_t> begins;

    static int32_t note(int32_t current, int32_t, void* userData) {
        auto& self = *static_cast<Shares*>(userData);
        if (current != self.account.current) {
            EXPECT_EQ(current, self.account.current + 1);
            self.begins.push_back(self.account.current);
        }
        return 1;
    }
};

TEST(BlurEstEstimate, LevelsTakeSharesOfTheProgressByTheInverseSquareOfTheirNumber) {
    // 1, 1/4 and 1/9 are 36, 9 and 4 of 49 parts.
    Shares shares{{49000, 1000000, &Shares::note, &shares, 0}, {}};
    {
        vel::CProgressSpan span(&shares.account);
        CBlurEst estimator;
        estimator.setup(cv::Mat(70, 70, CV_8UC1, cv::Scalar(50)), emptyKernel(15, 15), &span);
        ASSERT_EQ(estimator.m_pyrLvls, 2);
        estimator.estimate(0.0f);
    }
    ASSERT_EQ(shares.begins.size(), 3U);
    EXPECT_EQ(shares.begins[0], 0);
    EXPECT_NEAR(shares.begins[1], 4000, 1);
    EXPECT_NEAR(shares.begins[2], 13000, 2);
    EXPECT_NEAR(shares.account.current, 49000, 3);
}

TEST(BlurEstEstimate, CountedIterationsChangeTheProgressAlone) {
    const cv::Mat blurred = blurredScene(70, 60);
    const auto estimated = [&](int iterations, Listener& listener) {
        ProgressRecord account = listener.record(9000, 100000);
        vel::CProgressSpan span(&account);
        const cv::Mat kernel = emptyKernel(3, 3);
        CBlurEst estimator;
        estimator.setup(blurred, kernel, &span);
        estimator.m_lvlIters.fill(iterations);
        estimator.estimate(0.0f);
        return kernel;
    };
    Listener three;
    Listener thirty;
    EXPECT_TRUE(sameBits(estimated(3, three), estimated(30, thirty)));
    EXPECT_EQ(three.heard[1], 1000);
    EXPECT_EQ(thirty.heard[1], 100);
}

int32_t countOfThreadZero(int32_t, int32_t, void* userData) {
    EXPECT_EQ(omp_get_thread_num(), 0);
    ++*static_cast<int*>(userData);
    return 1;
}

TEST(BlurEstEstimate, OnlyThreadNumberZeroTellsTheProgress) {
    const cv::Mat blurred = blurredScene(100, 90);
    vel::test::forThreadCounts([&] {
        int calls = 0;
        ProgressRecord account{1000, 1000, countOfThreadZero, &calls, 0};
        vel::CProgressSpan span(&account);
        CBlurEst estimator;
        estimator.setup(blurred.clone(), emptyKernel(5, 5), &span);
        estimator.estimate(0.0f);
        EXPECT_GT(calls, 30);
    });
}

TEST(BlurEstEstimate, ImageWithoutAnEdgeGivesAKernelOfNotANumberEntries) {
    const cv::Mat kernel = emptyKernel(7, 5);
    CBlurEst estimator;
    estimator.setup(cv::Mat(80, 90, CV_8UC1, cv::Scalar(100)), kernel, nullptr);
    EXPECT_EQ(estimator.estimate(1.0f), 1);
    EXPECT_TRUE(isNaNThroughout(kernel));
}

TEST(BlurEstEstimate, SmallestImagesAndAnyKernelSidesAreSurvived) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 3), cv::Size(3, 3),
                                cv::Size(5, 4), cv::Size(17, 16)}) {
        for (const cv::Size kernelSize :
             {cv::Size(1, 1), cv::Size(3, 3), cv::Size(9, 1), cv::Size(1, 9), cv::Size(41, 41)}) {
            const cv::Mat kernel = emptyKernel(kernelSize.width, kernelSize.height);
            CBlurEst estimator;
            estimator.setup(drawnScene(size, CV_8UC1), kernel, nullptr);
            EXPECT_EQ(estimator.estimate(1.0f), 1);
            EXPECT_TRUE(isNaNThroughout(kernel)) << size << kernelSize;
        }
    }
}

TEST(BlurEstEstimate, ImageOfOneSmallLevelIsEnoughForASmallKernel) {
    const cv::Mat kernel = emptyKernel(3, 3);
    CBlurEst estimator;
    estimator.setup(byteScene(31, 33), kernel, nullptr);
    EXPECT_EQ(estimator.estimate(2.0f), 1);
    expectCleanKernel(kernel);
}

TEST(BlurEstEstimate, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat blurred = blurredWith(byteScene(170, 140), discKernel(5, 2.0));
    const auto estimated = [&] {
        const cv::Mat kernel = emptyKernel(5, 7);
        CBlurEst estimator;
        estimator.setup(blurred.clone(), kernel, nullptr);
        estimator.estimate(0.8f);
        return kernel;
    };
    const cv::Mat expected = estimated();
    expectCleanKernel(expected);
    vel::test::forThreadCounts([&] { EXPECT_TRUE(sameBits(estimated(), expected)); });
}

} // namespace
