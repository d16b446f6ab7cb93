#include "velimproclib/veldeblurcv/kernels/GaussianKernel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using vel::createGaussianKernel;
using vel::gaussianKernelSize;

TEST(GaussianKernel, SizeReachesThreeDeviationsEachWay) {
    EXPECT_EQ(gaussianKernelSize(1.0f), 7);
    EXPECT_EQ(gaussianKernelSize(0.1f), 1);
    EXPECT_EQ(gaussianKernelSize(0.0f), 1);
    EXPECT_EQ(gaussianKernelSize(2.5f), 17);
    EXPECT_EQ(gaussianKernelSize(std::nanf("")), 1);
}

TEST(GaussianKernel, SmallSigmaGivesASingleOne) {
    const cv::Mat kernel = createGaussianKernel(1, 0.1f);
    EXPECT_EQ(kernel.at<float>(0, 0), 1.0f);
}

TEST(GaussianKernel, SigmaOfZeroGivesNotANumber) {
    const cv::Mat kernel = createGaussianKernel(1, 0.0f);
    EXPECT_TRUE(std::isnan(kernel.at<float>(0, 0)));
}

TEST(GaussianKernel, SizesThatNoMatrixHasFail) {
    EXPECT_ANY_THROW(createGaussianKernel(-3, -1.0f));
    EXPECT_ANY_THROW(
        createGaussianKernel(gaussianKernelSize(std::numeric_limits<float>::infinity()), 1.0f));
}

TEST(GaussianKernel, MatchesThePlainFormulaToTheLastBit) {
    for (int step = 1; step <= 200; ++step) {
        const float sigma = 0.037f * static_cast<float>(step);
        const auto size = static_cast<int>(gaussianKernelSize(sigma));
        const cv::Mat kernel = createGaussianKernel(size, sigma);
        ASSERT_EQ(kernel.type(), CV_32FC1);
        ASSERT_EQ(kernel.size(), cv::Size(size, size));

        cv::Mat_<float> expected(size, size);
        const double s = sigma;
        float sum = 0.0f;
        for (int i = 0; i < size * size; ++i) {
            const auto dy = static_cast<float>(i / size - (size - 1) * 0.5);
            const auto dx = static_cast<float>(i % size - (size - 1) * 0.5);
            const auto e = static_cast<float>(
                -(static_cast<double>(dx) * dx + static_cast<double>(dy) * dy) / ((s + s) * s));
            expected(i / size, i % size) = static_cast<float>(std::exp(static_cast<double>(e)));
            sum = sum + expected(i / size, i % size);
        }
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                ASSERT_EQ(kernel.at<float>(y, x), expected(y, x) / sum)
                    << "sigma " << sigma << " at " << x << "," << y;
            }
        }
    }
}

} // namespace
