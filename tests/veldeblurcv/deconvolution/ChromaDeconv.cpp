#include "velimproclib/veldeblurcv/deconvolution/ChromaDeconv.h"

#include "tests/support/CircularModel.h"
#include "tests/support/sameBits.h"

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

TEST(ChromaDeconv, AnyOtherSideGivesATransformOf1024) {
    const cv::Mat kernel = unevenKernel(3, 3);
    CChromaDeconv chroma;
    chroma.setup(kernel, cv::Point(), {300, 300}, kWeight);
    cv::Mat in = blurred(scene(1024), kernel);
    cv::Mat out;
    chroma.Proc(in, out);
    EXPECT_TRUE(sameBits(out, restore(in, kernel)));
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
