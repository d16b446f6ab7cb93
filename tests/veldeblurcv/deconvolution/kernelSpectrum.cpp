#include "velimproclib/veldeblurcv/deconvolution/kernelSpectrum.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace vel;

cv::Mat numbered(int rows, int cols) {
    cv::Mat kernel(rows, cols, CV_32FC1);
    for (int i = 0; i < rows * cols; ++i) {
        kernel.at<float>(i / cols, i % cols) = static_cast<float>(i + 1);
    }
    return kernel;
}

TEST(KernelSpectrum, TheCentreOfAnOddKernelGoesToTheOrigin) {
    const cv::Mat plane = placeKernel(numbered(3, 5), 16);
    EXPECT_EQ(plane.at<float>(0, 0), 8.0f);
    EXPECT_EQ(plane.at<float>(15, 14), 1.0f);
    EXPECT_EQ(plane.at<float>(15, 2), 5.0f);
    EXPECT_EQ(plane.at<float>(1, 14), 11.0f);
    EXPECT_EQ(plane.at<float>(1, 2), 15.0f);
    EXPECT_EQ(cv::countNonZero(plane), 15);
}

TEST(KernelSpectrum, AnEvenKernelIsCentredAtHalfItsSides) {
    const cv::Mat plane = placeKernel(numbered(2, 4), 16);
    EXPECT_EQ(plane.at<float>(0, 0), 7.0f);
    EXPECT_EQ(plane.at<float>(15, 14), 1.0f);
    EXPECT_EQ(plane.at<float>(0, 1), 8.0f);
}

TEST(KernelSpectrum, AKernelLargerThanThePlaneAddsUp) {
    const cv::Mat ones(37, 50, CV_32FC1, cv::Scalar(1));
    const cv::Mat plane = placeKernel(ones, 16);
    EXPECT_EQ(cv::sum(plane)[0], 37.0 * 50.0);
    EXPECT_EQ(plane.at<float>(0, 0), 9.0f);
    EXPECT_EQ(cv::countNonZero(placeKernel(cv::Mat(), 16)), 0);
}

TEST(KernelSpectrum, ASingleWeightHasItsMagnitudeAtEveryFrequency) {
    const RealFft2D fft(8, 8);
    ThreadScratch scratch;
    scratch.allocate(fft.scratchFloats());
    cv::Mat kernel = cv::Mat::zeros(3, 3, CV_32FC1);
    kernel.at<float>(0, 2) = 0.5f;
    AlignedFloats spectrum;
    transformKernel(kernel, fft, scratch, spectrum);
    ASSERT_EQ(spectrum.size(), fft.spectrumFloats());
    for (int v = 0; v < fft.height(); ++v) {
        const float* row = spectrum.data() + fft.blockFloats() + v * RealFft2D::kRowFloats;
        EXPECT_NEAR(std::hypot(row[3], row[3 + RealFft2D::kLanes]), 0.5f, 1e-6f) << v;
    }
}

} // namespace
