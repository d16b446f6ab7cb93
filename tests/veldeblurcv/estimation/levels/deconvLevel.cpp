#include "velimproclib/veldeblurcv/estimation/levels/deconvLevel.h"

#include "tests/support/digestOf.h"
#include "tests/support/DrawnScene.h"
#include "tests/support/ProgressListener.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "tests/veldeblurcv/estimation/SoftScene.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using vel::test::blurredWith;
using vel::test::digestOf;
using vel::test::drawnScene;
using vel::test::plainDiscKernel;
using vel::test::sameBits;
using vel::test::softScene;

cv::Mat deconvolved(const cv::Mat& in, const cv::Mat& kernel) {
    vel::CProgressSpan silent;
    cv::Mat out(in.size(), CV_8UC1, cv::Scalar(99));
    vel::deconvLevel(in, kernel, out, silent);
    return out;
}

cv::Mat boxKernel(int side) {
    return cv::Mat(side, side, CV_32FC1, cv::Scalar(1.0 / (side * side)));
}

TEST(DeconvLevel, SharpensAnImageThatItsKernelBlurred) {
    const cv::Mat kernel = plainDiscKernel(7, 2.5);
    const cv::Mat sharp = drawnScene(cv::Size(256, 256), CV_8UC1);
    const cv::Mat soft = blurredWith(sharp, kernel);
    const cv::Mat restored = deconvolved(soft, kernel);
    EXPECT_GT(cv::PSNR(restored, sharp), cv::PSNR(soft, sharp) + 4.0);
    // The four blocks overlap here.
    const cv::Rect seams[] = {{26, 0, 200, 256}, {0, 26, 256, 200}};
    for (const cv::Rect& seam : seams) {
        EXPECT_GT(cv::PSNR(restored(seam), sharp(seam)), cv::PSNR(soft(seam), sharp(seam)) + 4.0);
    }
}

TEST(DeconvLevel, ResultsOfOneBlockAreThoseOfTheDigest) {
    EXPECT_EQ(digestOf(deconvolved(softScene(1, 1), boxKernel(5))), "AF643C4C86028FAC");
    EXPECT_EQ(digestOf(deconvolved(softScene(90, 61), boxKernel(5))), "22B071F2979FBCDC");
    EXPECT_EQ(digestOf(deconvolved(softScene(224, 224), boxKernel(1))), "57F8C5EEC2B92D37");
}

TEST(DeconvLevel, BlocksOverlapByEightAndHaveABorderOfSixteen) {
    // With another overlap, one of these widths has another plan.
    EXPECT_EQ(digestOf(deconvolved(softScene(1494, 9), boxKernel(5))), "EB21C3A56000496D");
    EXPECT_EQ(digestOf(deconvolved(softScene(1496, 9), boxKernel(5))), "B56D1C072DC56441");
}

/// The plan decides the length of the parts, the walk their number. It takes four blocks for either
/// width, one more than the plan has for the smaller one.
TEST(DeconvLevel, EachBlockAdvancesByOnePlannedPartOfAStep) {
    using Heard = std::vector<int32_t>;
    for (const auto& [width, expected] :
         {std::pair{1494, Heard{167, 334, 501, 668}}, {1496, Heard{125, 250, 375, 500}}}) {
        const cv::Mat in = softScene(width, 9);
        vel::test::Listener listener;
        ProgressRecord account = listener.record(1006, 1006);
        vel::CProgressSpan span(&account);
        ASSERT_EQ(span.begin(1.0f, 2), 503);
        listener.heard.clear();
        cv::Mat out(in.size(), CV_8UC1);
        vel::deconvLevel(in, boxKernel(1), out, span);
        EXPECT_EQ(listener.heard, expected);
        // The counter then moves to the end of the step without a call.
        EXPECT_EQ(account.current, 503);
    }
}

TEST(DeconvLevel, KernelOfNotANumberEntriesGivesBlack) {
    const cv::Mat kernel(5, 5, CV_32FC1, cv::Scalar(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(cv::countNonZero(deconvolved(softScene(60, 40), kernel)), 0);
}

TEST(DeconvLevel, KernelLargerThanImageAndBlockBlursAFlatImageIntoItself) {
    const cv::Mat kernel(301, 259, CV_32FC1, cv::Scalar(1.0 / (301 * 259)));
    const cv::Mat flat(7, 9, CV_8UC1, cv::Scalar(120));
    EXPECT_LE(cv::norm(deconvolved(flat, kernel), flat, cv::NORM_INF), 1.0);
}

TEST(DeconvLevel, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat in = softScene(256, 150);
    const cv::Mat kernel = plainDiscKernel(7, 2.5);
    const cv::Mat expected = deconvolved(in, kernel);
    vel::test::forThreadCounts([&] { EXPECT_TRUE(sameBits(deconvolved(in, kernel), expected)); });
}

} // namespace
