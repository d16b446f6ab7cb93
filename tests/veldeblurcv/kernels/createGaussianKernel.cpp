#include "velimproclib/veldeblurcv/kernels/createGaussianKernel.h"

#include "tests/support/Digest.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <span>

namespace {

using vel::createGaussianKernel;
using vel::gaussianKernelSize;

TEST(GaussianKernel, SizeReachesThreeDeviationsInEachDirection) {
    EXPECT_EQ(gaussianKernelSize(1.0f), 7);
    EXPECT_EQ(gaussianKernelSize(0.1f), 1);
    EXPECT_EQ(gaussianKernelSize(0.0f), 1);
    EXPECT_EQ(gaussianKernelSize(2.5f), 17);
    EXPECT_EQ(gaussianKernelSize(std::nanf("")), 1);
}

TEST(GaussianKernel, SmallSigmaGivesASingleElementOfOne) {
    const cv::Mat kernel = createGaussianKernel(1, 0.1f);
    EXPECT_EQ(kernel.at<float>(0, 0), 1.0f);
}

TEST(GaussianKernel, SigmaOfZeroGivesNaN) {
    const cv::Mat kernel = createGaussianKernel(1, 0.0f);
    EXPECT_TRUE(std::isnan(kernel.at<float>(0, 0)));
}

TEST(GaussianKernel, SizesThatNoMatrixCanHaveFail) {
    EXPECT_ANY_THROW(createGaussianKernel(-3, -1.0f));
    EXPECT_ANY_THROW(
        createGaussianKernel(gaussianKernelSize(std::numeric_limits<float>::infinity()), 1.0f));
}

TEST(GaussianKernel, ElementsFollowTheGaussianOfTheirDistance) {
    for (const float sigma : {0.4f, 1.0f, 2.345f, 7.0f}) {
        const auto size = static_cast<int>(gaussianKernelSize(sigma));
        const cv::Mat_<float> kernel = createGaussianKernel(size, sigma);
        ASSERT_EQ(kernel.size(), cv::Size(size, size));
        EXPECT_NEAR(cv::sum(kernel)[0], 1.0, 1e-5);
        const int centre = size / 2;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const double distance = std::hypot(x - centre, y - centre) / sigma;
                EXPECT_NEAR(kernel(y, x) / kernel(centre, centre),
                            std::exp(-0.5 * distance * distance), 1e-6)
                    << "sigma " << sigma << " at " << x << ',' << y;
            }
        }
    }
}

TEST(GaussianKernel, KernelsKeepTheirBits) {
    vel::test::Digest digest;
    for (int step = 1; step <= 200; ++step) {
        const float sigma = 0.037f * static_cast<float>(step);
        const cv::Mat kernel = createGaussianKernel(gaussianKernelSize(sigma), sigma);
        ASSERT_EQ(kernel.type(), CV_32FC1);
        digest.add(std::span<const float>(kernel.ptr<float>(), kernel.total()));
    }
    EXPECT_EQ(digest.text(), "847D55133AD7A0E0");
}

} // namespace
