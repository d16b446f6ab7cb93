// The contract that the deconvolvers of luminance and chroma share.
#include "tests/support/CircularModel.h"
#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "velimproclib/veldeblurcv/deconvolution/ChromaDeconv.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"

#include <gtest/gtest.h>

namespace {

using namespace vel;
using namespace vel::test;

void setUp(CDeconvHL& deconv, const cv::Mat& kernel, cv::Size size, cv::Point anchor = {}) {
    deconv.setup(kernel, anchor, size, 2000.0f, 0.5f, true);
}

void setUp(CChromaDeconv& chroma, const cv::Mat& kernel, cv::Size size, cv::Point anchor = {}) {
    chroma.setup(kernel, anchor, size, 0.01f);
}

template <class Deconvolver>
cv::Mat restore(const cv::Mat& in, const cv::Mat& kernel) {
    Deconvolver deconvolver;
    setUp(deconvolver, kernel, in.size());
    cv::Mat plane = in.clone();
    cv::Mat out(in.size(), CV_32FC1);
    deconvolver.Proc(plane, out);
    EXPECT_TRUE(sameBits(plane, in)) << "the observed plane must not change";
    return out;
}

template <class Deconvolver>
class Deconvolvers : public testing::Test {};
using Types = testing::Types<CDeconvHL, CChromaDeconv>;
TYPED_TEST_SUITE(Deconvolvers, Types);

TYPED_TEST(Deconvolvers, AConstantPlaneStaysTheSame) {
    for (const int side : {256, 512, 1024}) {
        const cv::Mat in(side, side, CV_32FC1, cv::Scalar(0.625));
        const cv::Mat out = restore<TypeParam>(in, unevenKernel(7, 7));
        EXPECT_LT(cv::norm(out, in, cv::NORM_INF), 2e-6) << side;
    }
}

TYPED_TEST(Deconvolvers, TheSumOfTheKernelScalesTheResult) {
    const cv::Mat in(256, 256, CV_32FC1, cv::Scalar(0.5));
    const cv::Mat kernel = 2.0 * unevenKernel(5, 5);
    const cv::Mat expected(256, 256, CV_32FC1, cv::Scalar(0.25));
    EXPECT_LT(cv::norm(restore<TypeParam>(in, kernel), expected, cv::NORM_INF), 2e-6);
}

TYPED_TEST(Deconvolvers, TheAnchorIsIgnored) {
    const cv::Mat kernel = unevenKernel(5, 5);
    cv::Mat in = blurred(scene(256), kernel);
    TypeParam deconvolver;
    setUp(deconvolver, kernel, in.size(), cv::Point(7, -3));
    cv::Mat out(in.size(), CV_32FC1);
    deconvolver.Proc(in, out);
    EXPECT_TRUE(sameBits(out, restore<TypeParam>(in, kernel)));
}

TYPED_TEST(Deconvolvers, PlanesMayHaveAnyRowStep) {
    const cv::Mat kernel = unevenKernel(5, 5);
    const cv::Mat in = blurred(scene(256), kernel);
    cv::Mat widerIn(258, 261, CV_32FC1, cv::Scalar(9));
    cv::Mat widerOut(257, 263, CV_32FC1, cv::Scalar(-7));
    cv::Mat inside = widerIn(cv::Rect(3, 1, 256, 256));
    cv::Mat outside = widerOut(cv::Rect(5, 1, 256, 256));
    in.copyTo(inside);
    TypeParam deconvolver;
    setUp(deconvolver, kernel, in.size());
    deconvolver.Proc(inside, outside);
    EXPECT_TRUE(sameBits(outside, restore<TypeParam>(in, kernel)));
    EXPECT_EQ(cv::countNonZero(widerOut != -7.0f), in.size().area());
}

TYPED_TEST(Deconvolvers, ResultsDoNotDependOnEarlierRuns) {
    const cv::Mat kernel = unevenKernel(5, 5);
    cv::Mat first = blurred(scene(256, 1), kernel);
    cv::Mat second = blurred(scene(256, 2), kernel);
    TypeParam deconvolver;
    setUp(deconvolver, kernel, first.size());
    cv::Mat out(first.size(), CV_32FC1);
    for (cv::Mat* in : {&first, &second, &first}) {
        deconvolver.Proc(*in, out);
        EXPECT_TRUE(sameBits(out, restore<TypeParam>(*in, kernel)));
    }
}

TYPED_TEST(Deconvolvers, EveryNumberOfThreadsAndEveryVariantGivesTheSameBits) {
    const cv::Mat kernel = unevenKernel(9, 9);
    const cv::Mat in = blurred(scene(512), kernel);
    const cv::Mat expected = restore<TypeParam>(in, kernel);
    const auto check = [&] { EXPECT_TRUE(sameBits(restore<TypeParam>(in, kernel), expected)); };
    forThreadCounts(check);
    forEachTarget(check);
}

TYPED_TEST(Deconvolvers, ATeamThatGrewAfterSetupGetsItsScratch) {
    const cv::Mat kernel = unevenKernel(5, 5);
    cv::Mat in = blurred(scene(256), kernel);
    cv::Mat out(in.size(), CV_32FC1);
    TypeParam deconvolver;
    {
        const ThreadCount one(1);
        setUp(deconvolver, kernel, in.size());
    }
    {
        const ThreadCount four(4);
        deconvolver.Proc(in, out);
    }
    EXPECT_TRUE(sameBits(out, restore<TypeParam>(in, kernel)));
}

TEST(DeconvolversTogether, RunInTwoSectionsOfOneTeam) {
    const cv::Mat kernel = unevenKernel(9, 9);
    cv::Mat luma = blurred(scene(256, 1), kernel);
    cv::Mat chroma = blurred(scene(256, 2), kernel);
    CDeconvHL deconv;
    CChromaDeconv chromaDeconv;
    setUp(deconv, kernel, luma.size());
    setUp(chromaDeconv, kernel, chroma.size());
    const cv::Mat expectedLuma = restore<CDeconvHL>(luma, kernel);
    const cv::Mat expectedChroma = restore<CChromaDeconv>(chroma, kernel);
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

} // namespace
