#include "velimproclib/veldeblurcv/estimation/solver/PSFEst.h"

#include "tests/support/digestOf.h"
#include "tests/support/EachTarget.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/sameBits.h"
#include "tests/support/textOf.h"
#include "tests/veldeblurcv/estimation/SoftScene.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/solver/NormalEquations.h"
#include "velimproclib/veldeblurcv/estimation/solver/sumEquations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <opencv2/imgproc.hpp>
#include <random>

namespace {

using vel::CPSFEst;
using vel::test::sameBits;
using vel::test::textOf;

/// A solver with a silent progress.
struct Solver {
    vel::CProgressSpan silent;
    CPSFEst solver{silent};

    void setUp(cv::Size kernel, cv::Size image, float lambda = 0.001f) {
        solver.setup(kernel, image, cv::Point(kernel.width / 2, kernel.height / 2), lambda, 0.0f,
                     1.0f, 1.0f, 1.0f, 1.0f, 1.0f);
    }
};

struct Scene {
    cv::Mat sharp;
    cv::Mat blurred;
    cv::Mat mask;
};

cv::Mat solved(const Scene& scene, cv::Size kernel, float lambda = 0.001f) {
    Solver s;
    s.setUp(kernel, scene.sharp.size(), lambda);
    s.solver.computeLA(scene.sharp, scene.blurred, scene.mask);
    return s.solver.computePSF();
}

/// The normal equations without the Tikhonov term.
struct Equations {
    cv::Mat matrix;
    cv::Mat rightHand;
    double pixels = 0.0;

    Equations(const Scene& scene, cv::Size kernel)
        : matrix(cv::Mat::zeros(kernel.area(), kernel.area(), CV_64FC1)),
          rightHand(cv::Mat::zeros(kernel.area(), 1, CV_64FC1)) {
        vel::CProgressSpan silent;
        pixels = static_cast<double>(vel::sumEquations(
            {scene.sharp, scene.blurred, scene.mask},
            {kernel, scene.sharp.size(), kernel.width / 2, kernel.height / 2}, silent,
            {matrix.ptr<double>(), matrix.step1(), rightHand.ptr<double>()}));
    }
};

/// Overlapping bright and dark boxes and discs, blurred, with a little noise; the mask selects the
/// neighbourhoods of edges.
Scene drawnScene(int side, int kernelSide, std::mt19937& random) {
    const auto between = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    Scene scene;
    scene.sharp = cv::Mat(side, side, CV_8UC1, cv::Scalar(between(40, 160)));
    for (int i = 0; i < 60; ++i) {
        const cv::Scalar level(between(0, 255));
        const cv::Point corner(between(0, side), between(0, side));
        if (i % 2 == 0) {
            cv::rectangle(scene.sharp, corner,
                          corner + cv::Point(between(3, side / 4), between(3, side / 4)), level,
                          cv::FILLED);
        } else {
            cv::circle(scene.sharp, corner, between(2, side / 8), level, cv::FILLED);
        }
    }
    cv::Mat kernel = cv::Mat::zeros(kernelSide, kernelSide, CV_32FC1);
    cv::line(kernel, cv::Point(between(0, kernelSide / 2), between(0, kernelSide - 1)),
             cv::Point(kernelSide - 1, between(0, kernelSide - 1)), cv::Scalar(1.0));
    kernel /= cv::sum(kernel)[0];
    cv::filter2D(scene.sharp, scene.blurred, -1, kernel);
    cv::Mat noise(side, side, CV_8UC1);
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            noise.at<unsigned char>(row, column) = static_cast<unsigned char>(between(0, 3));
        }
    }
    scene.blurred += noise;
    cv::Mat mean;
    cv::blur(scene.sharp, mean, cv::Size(3, 3));
    cv::absdiff(scene.sharp, mean, mean);
    scene.mask = mean > 8;
    return scene;
}

/// The kernel by singular values alone.
cv::Mat bySingularValues(const Equations& equations, cv::Size kernel, float lambda) {
    cv::Mat matrix = equations.matrix.clone();
    for (int i = 0; i < matrix.rows; ++i) {
        matrix.at<double>(i, i) += equations.pixels * 255.0 * double{lambda};
    }
    cv::Mat x;
    cv::solve(matrix, equations.rightHand, x, cv::DECOMP_SVD);
    cv::Mat kernelBySvd(kernel, CV_32FC1);
    for (int i = 0; i < kernel.width; ++i) {
        for (int j = 0; j < kernel.height; ++j) {
            kernelBySvd.at<float>(j, i) = static_cast<float>(x.at<double>(i * kernel.height + j));
        }
    }
    return kernelBySvd;
}

double largestDifferenceToPeak(const cv::Mat& kernel, const cv::Mat& reference) {
    return cv::norm(kernel, reference, cv::NORM_INF) / cv::norm(reference, cv::NORM_INF);
}

void expectKernelBySingularValues(const Scene& scene, cv::Size kernel, float lambda = 0.001f) {
    const Equations equations(scene, kernel);
    ASSERT_GT(equations.pixels, 100.0);
    const cv::Mat reference = bySingularValues(equations, kernel, lambda);
    EXPECT_LE(largestDifferenceToPeak(solved(scene, kernel, lambda), reference), 1e-6)
        << kernel << ' ' << lambda;
}

TEST(PSFEst, KernelsEqualThoseBySingularValuesToAMillionthOfThePeak) {
    std::mt19937 random(60);
    for (const cv::Size kernel :
         {cv::Size(1, 1), cv::Size(3, 3), cv::Size(5, 5), cv::Size(7, 7), cv::Size(13, 13),
          cv::Size(17, 17), cv::Size(31, 31), cv::Size(9, 5), cv::Size(3, 11), cv::Size(15, 1)}) {
        expectKernelBySingularValues(drawnScene(160, std::max(kernel.width, kernel.height), random),
                                     kernel);
    }
}

TEST(PSFEst, WeakTikhonovTermsStillGiveTheKernelBySingularValues) {
    std::mt19937 random(62);
    const Scene scene = drawnScene(160, 9, random);
    const cv::Size kernel(9, 9);
    const Equations equations(scene, kernel);
    const double trace = cv::trace(equations.matrix)[0];
    // Singular values take over below 1e-12 of the trace.
    for (const double share : {1.1e-8, 1.1e-10, 1.1e-12, 0.9e-12, 1e-14, 0.0}) {
        expectKernelBySingularValues(
            scene, kernel, static_cast<float>(share * trace / (255.0 * equations.pixels)));
    }
}

TEST(PSFEst, SmoothScenesGiveTheKernelBySingularValues) {
    std::mt19937 random(66);
    Scene scene = drawnScene(160, 13, random);
    for (const double sigma : {1.0, 2.0, 4.0}) {
        cv::GaussianBlur(scene.sharp, scene.sharp, cv::Size(), sigma);
        for (const int side : {7, 13}) {
            expectKernelBySingularValues(scene, cv::Size(side, side));
        }
    }
}

TEST(PSFEst, SolvedKernelsAreThoseOfTheDigestOnEveryProcessorVariant) {
    const cv::Mat sharp = vel::test::softScene(120, 100);
    cv::Mat blurred = sharp.clone();
    for (int y = 0; y < blurred.rows; ++y) {
        std::rotate(blurred.ptr(y), blurred.ptr(y) + 1, blurred.ptr(y) + blurred.cols);
    }
    const Scene scene{sharp, blurred, sharp};
    vel::test::forEachTarget([&] {
        EXPECT_EQ(vel::test::digestOf({solved(scene, cv::Size(1, 1)), solved(scene, cv::Size(3, 5)),
                                       solved(scene, cv::Size(13, 11))}),
                  "519E25E8DAF99D21");
    });
}

/// Without a Tikhonov term the equations of a flat image have rank 1 and many solutions.
TEST(PSFEst, SingularEquationsHaveTheSolutionOfLeastNorm) {
    const cv::Mat flat(100, 100, CV_8UC1, cv::Scalar(200));
    const cv::Mat expected(3, 3, CV_32FC1, cv::Scalar(1.0 / 9.0));
    EXPECT_LE(largestDifferenceToPeak(solved({flat, flat, flat}, cv::Size(3, 3), 0.0f), expected),
              1e-6);
}

/// Flat images have equations of rank 1, the worst condition that the Tikhonov term allows. Every
/// entry of their kernel is known.
TEST(PSFEst, FlatImagesGiveAnEvenKernel) {
    const cv::Mat flat(100, 100, CV_8UC1, cv::Scalar(255));
    for (const int side : {1, 3, 9, 17}) {
        const double entry = 65025.0 / (65025.0 * side * side + 255.0 * double{0.001f});
        const cv::Mat expected(side, side, CV_32FC1, cv::Scalar(entry));
        EXPECT_LE(
            largestDifferenceToPeak(solved({flat, flat, flat}, cv::Size(side, side)), expected),
            1e-6)
            << side;
    }
}

/// With one unknown the solve is a division.
TEST(PSFEst, TikhonovTermIs255TimesThePixelsTimesTheWeight) {
    std::mt19937 random(68);
    const Scene scene = drawnScene(60, 3, random);
    const Equations equations(scene, cv::Size(1, 1));
    for (const float lambda : {0.001f, 1.0f, 400.0f}) {
        const double term = equations.pixels * 255.0 * static_cast<double>(lambda);
        const double expected =
            equations.rightHand.at<double>(0) / (equations.matrix.at<double>(0, 0) + term);
        EXPECT_FLOAT_EQ(solved(scene, cv::Size(1, 1), lambda).at<float>(0, 0),
                        static_cast<float>(expected));
    }
}

TEST(PSFEst, FindsTheBlurOfADrawnScene) {
    std::mt19937 random(63);
    Scene scene = drawnScene(200, 3, random);
    cv::Mat blur = cv::Mat::zeros(5, 5, CV_32FC1);
    blur.at<float>(1, 1) = 0.25f;
    blur.at<float>(2, 2) = 0.5f;
    blur.at<float>(2, 4) = 0.25f;
    // filter2D correlates, as the model does, so the kernel is not turned.
    cv::filter2D(scene.sharp, scene.blurred, -1, blur);
    EXPECT_LE(cv::norm(solved(scene, cv::Size(5, 5)), blur, cv::NORM_INF), 0.01);
}

TEST(PSFEst, RowOffsetIsHalfTheColumnsAndColumnOffsetHalfTheRows) {
    // The blurred image equals the sharp one, so that the kernel is the tap at the pixel itself.
    std::mt19937 random(70);
    Scene scene = drawnScene(120, 3, random);
    scene.blurred = scene.sharp;
    const cv::Mat kernel = solved(scene, cv::Size(5, 9));
    EXPECT_GT(kernel.at<float>(2, 4), 0.9f);
}

TEST(PSFEst, WeightsOfTheDerivativesChangeNothing) {
    std::mt19937 random(67);
    const Scene scene = drawnScene(80, 3, random);
    const cv::Mat expected = solved(scene, cv::Size(3, 5));
    for (const float weight : {0.0f, -3.0f, std::nanf("")}) {
        Solver s;
        s.solver.setup(cv::Size(3, 5), scene.sharp.size(), cv::Point(1, 2), 0.001f, weight, weight,
                       weight, weight, weight, weight);
        s.solver.computeLA(scene.sharp, scene.blurred, scene.mask);
        EXPECT_TRUE(sameBits(s.solver.computePSF(), expected)) << weight;
    }
}

TEST(PSFEst, SecondSetUpForgetsTheFirst) {
    std::mt19937 random(69);
    const Scene scene = drawnScene(80, 3, random);
    Solver s;
    s.setUp(cv::Size(7, 7), scene.sharp.size());
    s.solver.computeLA(scene.sharp, scene.blurred, scene.mask);
    s.setUp(cv::Size(3, 3), scene.sharp.size());
    s.solver.computeLA(scene.sharp, scene.blurred, scene.mask);
    EXPECT_TRUE(sameBits(s.solver.computePSF(), solved(scene, cv::Size(3, 3))));
}

TEST(PSFEst, WithoutAPixelTheKernelIsZero) {
    const cv::Mat image(40, 40, CV_8UC1, cv::Scalar(200));
    const cv::Mat nothing = cv::Mat::zeros(40, 40, CV_8UC1);
    const cv::Mat kernel = solved({image, image, nothing}, cv::Size(5, 3));
    EXPECT_EQ(kernel.size(), cv::Size(5, 3));
    EXPECT_EQ(cv::countNonZero(kernel), 0);
}

TEST(PSFEst, NotANumberAndNegativeWeightsDoNotCrash) {
    std::mt19937 random(64);
    const Scene scene = drawnScene(100, 3, random);
    for (const float lambda : {std::nanf(""), std::numeric_limits<float>::infinity(), -1e6f}) {
        EXPECT_EQ(solved(scene, cv::Size(3, 3), lambda).size(), cv::Size(3, 3));
    }
}

TEST(PSFEst, RefusesOtherImageTypes) {
    const cv::Mat bytes = cv::Mat::zeros(30, 30, CV_8UC1);
    for (const int type : {CV_8UC3, CV_16UC1, CV_32FC1, CV_8SC1}) {
        const cv::Mat other = cv::Mat::zeros(30, 30, type);
        for (std::size_t place = 0; place < 3; ++place) {
            std::array<cv::Mat, 3> images{bytes, bytes, bytes};
            images[place] = other;
            Solver s;
            s.setUp(cv::Size(3, 3), bytes.size());
            EXPECT_EQ(textOf([&] { s.solver.computeLA(images[0], images[1], images[2]); }),
                      "CPSFEst::computeLA8U - image/blur/mask.type() != CV_8UC1");
        }
    }
}

TEST(PSFEst, ImagesSmallerThanSetUpAreAnExceptionOfTheMatrixLibrary) {
    const cv::Mat whole = cv::Mat::zeros(30, 30, CV_8UC1);
    for (const cv::Size size : {cv::Size(29, 30), cv::Size(30, 29), cv::Size(0, 0)}) {
        for (std::size_t place = 0; place < 3; ++place) {
            std::array<cv::Mat, 3> images{whole, whole, whole};
            images[place] = cv::Mat::zeros(size, CV_8UC1);
            Solver s;
            s.setUp(cv::Size(3, 3), whole.size());
            EXPECT_THROW(s.solver.computeLA(images[0], images[1], images[2]), cv::Exception);
        }
    }
}

TEST(PSFEst, KernelsTooLargeForMemoryAreExceptions) {
    // Unknowns beyond an int; a matrix whose bytes pass 2^64; one whose bytes pass 2^63.
    for (const int side : {50001, 39001, 33001}) {
        Solver s;
        EXPECT_THROW(s.setUp(cv::Size(side, side), cv::Size(10, 10)), std::bad_alloc);
    }
}

} // namespace
