#include "velimproclib/veldeblurcv/deconvolution/ChromaDeconv.h"

#include "tests/support/CircularModel.h"
#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace vel;
using namespace vel::test;

constexpr float kWeight = 0.01f;

cv::Mat plainChroma(const cv::Mat& in, const cv::Mat& kernel, double weight) {
    const int n = in.rows;
    cv::Mat k = forward(centredKernel(kernel, n));
    cv::Mat dx = forward(differencePlane(n, 0, n - 1));
    cv::Mat dy = forward(differencePlane(n, n - 1, 0));
    cv::Mat y = forward(in);
    for (int v = 0; v < n; ++v) {
        for (int u = 0; u < n; ++u) {
            const double prior = std::norm(at(dx, v, u)) + std::norm(at(dy, v, u));
            at(y, v, u) *= std::conj(at(k, v, u)) / (std::norm(at(k, v, u)) + weight * prior);
        }
    }
    return inverse(y);
}

cv::Mat restore(const cv::Mat& in, const cv::Mat& kernel, float weight = kWeight) {
    CChromaDeconv chroma;
    chroma.setup(kernel, cv::Point(), in.size(), weight);
    cv::Mat plane = in.clone();
    cv::Mat out(in.size(), CV_32FC1);
    chroma.Proc(plane, out);
    EXPECT_TRUE(sameBits(plane, in)) << "the observed plane must not change";
    return out;
}

TEST(ChromaDeconv, IsTheExactMinimiserOnTheCircle) {
    for (const int side : {256, 512}) {
        const cv::Mat kernels[] = {unevenKernel(7, 7), unevenKernel(1, 9), unevenKernel(6, 4)};
        for (const cv::Mat& kernel : kernels) {
            for (const float weight : {0.01f, 0.5f}) {
                const cv::Mat in = blurred(scene(side), kernel);
                cv::Mat expected;
                plainChroma(in, kernel, weight).convertTo(expected, CV_32F);
                EXPECT_LT(cv::norm(restore(in, kernel, weight), expected, cv::NORM_INF), 2e-5)
                    << side << " " << kernel.size() << " " << weight;
            }
        }
    }
}

TEST(ChromaDeconv, AConstantPlaneStaysTheSame) {
    for (const int side : {256, 512, 1024}) {
        const cv::Mat in(side, side, CV_32FC1, cv::Scalar(0.375));
        EXPECT_LT(cv::norm(restore(in, unevenKernel(5, 5)), in, cv::NORM_INF), 1e-6) << side;
    }
}

TEST(ChromaDeconv, AnyOtherSideGivesATransformOf1024) {
    const cv::Mat kernel = unevenKernel(3, 3);
    CChromaDeconv chroma;
    chroma.setup(kernel, cv::Point(), {300, 300}, kWeight);
    cv::Mat in = blurred(scene(1024), kernel);
    cv::Mat out;
    chroma.Proc(in, out);
    EXPECT_TRUE(sameBits(out, restore(in, kernel)));
}

TEST(ChromaDeconv, EveryNumberOfThreadsAndEveryVariantGivesTheSameBits) {
    const cv::Mat kernel = unevenKernel(9, 9);
    const cv::Mat in = blurred(scene(256), kernel);
    const cv::Mat any = restore(in, kernel);
    forThreadCounts([&] { EXPECT_TRUE(sameBits(restore(in, kernel), any)); });
    forEachTarget([&] { EXPECT_TRUE(sameBits(restore(in, kernel), any)); });
}

TEST(ChromaDeconv, ATeamThatGrewAfterSetupGetsItsScratch) {
    const cv::Mat kernel = unevenKernel(5, 5);
    cv::Mat in = blurred(scene(256), kernel);
    cv::Mat out(in.size(), CV_32FC1);
    CChromaDeconv chroma;
    {
        const ThreadCount one(1);
        chroma.setup(kernel, cv::Point(), in.size(), kWeight);
    }
    {
        const ThreadCount four(4);
        chroma.Proc(in, out);
    }
    EXPECT_TRUE(sameBits(out, restore(in, kernel)));
}

TEST(ChromaDeconv, RunsInASectionNextToTheLuminance) {
    const cv::Mat kernel = unevenKernel(9, 9);
    cv::Mat luma = blurred(scene(256, 1), kernel);
    cv::Mat chroma = blurred(scene(256, 2), kernel);
    CDeconvHL deconv;
    deconv.setup(kernel, cv::Point(), luma.size(), 2000.0f, 0.5f, true);
    CChromaDeconv chromaDeconv;
    chromaDeconv.setup(kernel, cv::Point(), chroma.size(), kWeight);
    cv::Mat expectedLuma(luma.size(), CV_32FC1);
    deconv.Proc(luma, expectedLuma);
    const cv::Mat expectedChroma = restore(chroma, kernel);
    for (const int threads : {1, 2, 4, 7}) {
        cv::Mat lumaOut(luma.size(), CV_32FC1);
        cv::Mat chromaOut(chroma.size(), CV_32FC1);
#pragma omp parallel sections num_threads(threads)
        {
#pragma omp section
            deconv.Proc(luma, lumaOut);
#pragma omp section
            for (int plane = 0; plane < 2; ++plane) {
                chromaDeconv.Proc(chroma, chromaOut);
            }
        }
        EXPECT_TRUE(sameBits(lumaOut, expectedLuma)) << threads;
        EXPECT_TRUE(sameBits(chromaOut, expectedChroma)) << threads;
    }
}

TEST(ChromaDeconv, TheAnchorIsIgnored) {
    const cv::Mat kernel = unevenKernel(5, 5);
    cv::Mat in = blurred(scene(256), kernel);
    CChromaDeconv chroma;
    chroma.setup(kernel, cv::Point(7, -3), in.size(), kWeight);
    cv::Mat out(in.size(), CV_32FC1);
    chroma.Proc(in, out);
    EXPECT_TRUE(sameBits(out, restore(in, kernel)));
}

TEST(ChromaDeconv, PlanesMayHaveAnyRowStep) {
    const cv::Mat kernel = unevenKernel(5, 5);
    const cv::Mat in = blurred(scene(256), kernel);
    cv::Mat widerIn(258, 261, CV_32FC1, cv::Scalar(9));
    cv::Mat widerOut(257, 263, CV_32FC1, cv::Scalar(-7));
    cv::Mat inside = widerIn(cv::Rect(3, 1, 256, 256));
    cv::Mat outside = widerOut(cv::Rect(5, 1, 256, 256));
    in.copyTo(inside);
    CChromaDeconv chroma;
    chroma.setup(kernel, cv::Point(), in.size(), kWeight);
    chroma.Proc(inside, outside);
    EXPECT_TRUE(sameBits(outside, restore(in, kernel)));
    EXPECT_EQ(cv::countNonZero(widerOut != -7.0f), in.size().area());
}

TEST(ChromaDeconv, TheSumOfTheKernelScalesTheResult) {
    const cv::Mat in(256, 256, CV_32FC1, cv::Scalar(0.5));
    const cv::Mat kernel = 2.0 * unevenKernel(5, 5);
    const cv::Mat expected(256, 256, CV_32FC1, cv::Scalar(0.25));
    EXPECT_LT(cv::norm(restore(in, kernel), expected, cv::NORM_INF), 2e-6);
}

TEST(ChromaDeconv, ResultsDoNotDependOnEarlierRuns) {
    const cv::Mat kernel = unevenKernel(5, 5);
    cv::Mat first = blurred(scene(256, 1), kernel);
    cv::Mat second = blurred(scene(256, 2), kernel);
    CChromaDeconv chroma;
    chroma.setup(kernel, cv::Point(), first.size(), kWeight);
    cv::Mat out(first.size(), CV_32FC1);
    for (cv::Mat* in : {&first, &second, &first}) {
        chroma.Proc(*in, out);
        EXPECT_TRUE(sameBits(out, restore(*in, kernel)));
    }
}

TEST(ChromaDeconv, AnyKernelGivesAResult) {
    const cv::Mat in = scene(256);
    cv::Mat kernel = unevenKernel(3, 3);
    kernel.at<float>(0, 0) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(restore(in, kernel).at<float>(5, 5)));
    EXPECT_TRUE(cv::checkRange(restore(in, unevenKernel(300, 700))));
    // Without a kernel the transfer is 0 at every frequency, and 0/0 at the lowest.
    EXPECT_TRUE(std::isnan(restore(in, cv::Mat()).at<float>(5, 5)));
}

} // namespace
