#include "velimproclib/veldeblurcv/kernels/normaliseKernel.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using Kernel = cv::Mat_<float>;

TEST(NormaliseKernel, DividesInSinglePrecisionAlsoInsideALargerMatrix) {
    Kernel large(4, 6, 2.0f);
    cv::Mat kernel = large(cv::Rect(1, 1, 3, 2));
    kernel.at<float>(1, 2) = 7.0f;
    vel::normaliseKernel(kernel, 3.0f);
    EXPECT_EQ(kernel.at<float>(0, 0), 2.0f / 3.0f);
    EXPECT_EQ(kernel.at<float>(1, 2), 7.0f / 3.0f);
    EXPECT_EQ(cv::countNonZero(large == 2.0f), 24 - 6);
}

TEST(NormaliseKernel, DividesDoublesBeforeItRounds) {
    std::array<double, 40> elements;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i] = 0.1 * static_cast<double>(i + 1);
    }
    Kernel kernel(5, 8);
    vel::normaliseKernel(elements, 3.0f, kernel);
    int differences = 0;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const float normalised = kernel.ptr<float>()[i];
        EXPECT_EQ(normalised, static_cast<float>(elements[i] / 3.0));
        differences += normalised != static_cast<float>(elements[i]) / 3.0f ? 1 : 0;
    }
    EXPECT_GT(differences, 0) << "some elements must depend on the precision of the division";
}

} // namespace
