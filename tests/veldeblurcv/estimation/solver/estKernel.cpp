#include "velimproclib/veldeblurcv/estimation/solver/estKernel.h"

#include "tests/support/sameBits.h"
#include "tests/support/textOf.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/solver/normaliseEstimate.h"
#include "velimproclib/veldeblurcv/estimation/solver/PSFEst.h"

#include <cmath>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace {

using vel::CProgressSpan;
using vel::estKernel;
using vel::KernelSolveSettings;
using vel::normaliseEstimate;
using vel::test::textOf;

constexpr KernelSolveSettings kSettings{0.001f, 0.0f, 1.0f, 1.0f, 0.05f};
CProgressSpan silent;

float sumInSingle(const cv::Mat& kernel) {
    float sum = 0.0f;
    for (int row = 0; row < kernel.rows; ++row) {
        for (int column = 0; column < kernel.cols; ++column) {
            sum += kernel.at<float>(row, column);
        }
    }
    return sum;
}

void expectAllNaN(const cv::Mat& kernel) {
    for (int row = 0; row < kernel.rows; ++row) {
        for (int column = 0; column < kernel.cols; ++column) {
            EXPECT_TRUE(std::isnan(kernel.at<float>(row, column)));
        }
    }
}

cv::Mat drawnScene() {
    cv::Mat scene(120, 140, CV_8UC1, cv::Scalar(90));
    cv::rectangle(scene, cv::Point(20, 20), cv::Point(60, 90), cv::Scalar(220), cv::FILLED);
    cv::rectangle(scene, cv::Point(70, 30), cv::Point(120, 50), cv::Scalar(10), cv::FILLED);
    cv::circle(scene, cv::Point(90, 80), 20, cv::Scalar(160), cv::FILLED);
    return scene;
}

TEST(EstKernel, RefusesEvenSides) {
    const cv::Mat image = drawnScene();
    for (const cv::Size size : {cv::Size(4, 5), cv::Size(5, 4), cv::Size(2, 2), cv::Size(0, 0)}) {
        cv::Mat kernel = cv::Mat::zeros(size, CV_32FC1);
        EXPECT_EQ(textOf([&] { estKernel(image, image, image, kernel, kSettings, silent); }),
                  "CBlurEst::estKernel - kernel.size() is not odd");
    }
}

TEST(EstKernel, RefusesOtherImageTypes) {
    const cv::Mat image = drawnScene();
    cv::Mat floats;
    image.convertTo(floats, CV_32F);
    cv::Mat kernel = cv::Mat::zeros(3, 3, CV_32FC1);
    EXPECT_EQ(textOf([&] { estKernel(image, image, floats, kernel, kSettings, silent); }),
              "CPSFEst::computeLA8U - image/blur/mask.type() != CV_8UC1");
}

TEST(EstKernel, OnePixelKernelIsOne) {
    const cv::Mat image = drawnScene();
    cv::Mat kernel = cv::Mat::zeros(1, 1, CV_32FC1);
    EXPECT_EQ(estKernel(image, image, image, kernel, kSettings, silent), 1);
    EXPECT_EQ(kernel.at<float>(0, 0), 1.0f);
}

TEST(EstKernel, FindsABlurAndDoesNotTurnIt) {
    const cv::Mat sharp = drawnScene();
    cv::Mat blur = cv::Mat::zeros(7, 5, CV_32FC1);
    blur.at<float>(1, 1) = 0.25f;
    blur.at<float>(3, 2) = 0.5f;
    blur.at<float>(5, 2) = 0.25f;
    cv::Mat blurred;
    // The patch of a pixel starts half the kernel's columns above it and half its rows to the left.
    cv::filter2D(sharp, blurred, -1, blur, cv::Point(3, 2));
    cv::Mat kernel(7, 5, CV_32FC1, cv::Scalar(-4.0));
    const unsigned char* memory = kernel.data;
    const cv::Mat mask(sharp.size(), CV_8UC1, cv::Scalar(1));
    EXPECT_EQ(estKernel(sharp, mask, blurred, kernel, kSettings, silent), 1);
    EXPECT_EQ(kernel.data, memory);
    EXPECT_LE(cv::norm(kernel, blur, cv::NORM_INF), 0.03);
    EXPECT_NEAR(sumInSingle(kernel), 1.0f, 1e-6f);
}

TEST(EstKernel, IsTheNormalisedSolution) {
    const cv::Mat sharp = drawnScene();
    cv::Mat blurred;
    cv::GaussianBlur(sharp, blurred, cv::Size(5, 5), 1.0);
    for (const float lambda : {0.001f, 50.0f}) {
        for (const float floor : {0.05f, 0.4f}) {
            vel::CPSFEst solver(silent);
            solver.setup(cv::Size(5, 5), sharp.size(), cv::Point(2, 2), lambda, 0.0f, 1.0f, 1.0f,
                         1.0f, 1.0f, 1.0f);
            solver.computeLA(sharp, blurred, sharp);
            cv::Mat expected = solver.computePSF().clone();
            normaliseEstimate(expected, floor);
            cv::Mat kernel = cv::Mat::zeros(5, 5, CV_32FC1);
            estKernel(sharp, sharp, blurred, kernel, {lambda, 0.0f, 1.0f, 1.0f, floor}, silent);
            EXPECT_TRUE(vel::test::sameBits(kernel, expected)) << lambda << ' ' << floor;
        }
    }
}

TEST(EstKernel, WithoutASelectedPixelTheKernelIsNotANumber) {
    const cv::Mat image = drawnScene();
    const cv::Mat nothing = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::Mat kernel = cv::Mat::ones(5, 3, CV_32FC1);
    EXPECT_EQ(estKernel(image, nothing, image, kernel, kSettings, silent), 1);
    expectAllNaN(kernel);
}

TEST(EstKernel, ImageTooSmallForTheKernelGivesNotANumber) {
    for (const cv::Size size : {cv::Size(14, 60), cv::Size(60, 14), cv::Size(1, 1)}) {
        const cv::Mat image(size, CV_8UC1, cv::Scalar(99));
        cv::Mat kernel = cv::Mat::ones(5, 5, CV_32FC1);
        EXPECT_EQ(estKernel(image, image, image, kernel, kSettings, silent), 1);
        expectAllNaN(kernel);
    }
}

int32_t count(int32_t, int32_t, void* userData) {
    ++*static_cast<int*>(userData);
    return 0;
}

TEST(EstKernel, SpendsOneStepOfTheProgress) {
    const cv::Mat image = drawnScene();
    int calls = 0;
    ProgressRecord account{300, 300, count, &calls, 0};
    CProgressSpan span(&account);
    span.begin(1.0f, 3);
    cv::Mat kernel = cv::Mat::zeros(3, 3, CV_32FC1);
    estKernel(image, image, image, kernel, kSettings, span);
    EXPECT_EQ(account.current, 100);
    EXPECT_GT(calls, 1);
}

} // namespace
