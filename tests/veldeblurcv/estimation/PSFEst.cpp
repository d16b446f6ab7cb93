#include "velimproclib/veldeblurcv/estimation/PSFEst.h"

#include "tests/support/EachTarget.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/sameBits.h"
#include "tests/support/textOf.h"
#include "tests/support/Threads.h"
#include "velimproclib/veldeblurcv/estimation/ProgressSpan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <omp.h>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

namespace {

using vel::CProgressSpan;
using vel::CPSFEst;
using vel::test::sameBits;
using vel::test::textOf;
using vel::test::ThreadCount;

struct Sums {
    cv::Mat matrix;
    cv::Mat rightHand;
    int count = 0;
};

std::array<double, 6> derivatives(const cv::Mat& image, int r, int c) {
    const auto p = [&](int y, int x) { return double{1} * image.at<unsigned char>(y, x); };
    return {p(r, c),
            p(r, c + 1) - p(r, c),
            p(r + 1, c) - p(r, c),
            p(r, c + 2) - 2 * p(r, c + 1) + p(r, c),
            p(r + 2, c) - 2 * p(r + 1, c) + p(r, c),
            p(r + 1, c + 1) - p(r, c + 1) - p(r + 1, c) + p(r, c)};
}

/// The definition as a plain loop in doubles. Patches that leave the image do not count.
Sums plainSums(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask, cv::Size kernel) {
    const int kW = kernel.width;
    const int kH = kernel.height;
    const int n = kW * kH;
    Sums sums{cv::Mat::zeros(n, n, CV_64FC1), cv::Mat::zeros(n, 1, CV_64FC1)};
    std::vector<std::array<double, 6>> x(static_cast<std::size_t>(n));
    for (int row = kH + 2; row <= image.rows - kH - 3; ++row) {
        for (int column = kW + 2; column <= image.cols - kW - 3; ++column) {
            if (mask.at<unsigned char>(row, column) == 0 || row < kW / 2 || column < kH / 2) {
                continue;
            }
            ++sums.count;
            const std::array<double, 6> y = derivatives(blur, row, column);
            for (int i = 0; i < kW; ++i) {
                for (int j = 0; j < kH; ++j) {
                    x[static_cast<std::size_t>(i * kH + j)] =
                        derivatives(image, row - kW / 2 + j, column - kH / 2 + i);
                }
            }
            for (int u = 0; u < n; ++u) {
                const auto& xu = x[static_cast<std::size_t>(u)];
                for (int v = 0; v < n; ++v) {
                    const auto& xv = x[static_cast<std::size_t>(v)];
                    double term = 0.0;
                    for (std::size_t d = 0; d < 6; ++d) {
                        term += xu[d] * xv[d];
                    }
                    sums.matrix.at<double>(u, v) += term;
                }
                double term = 0.0;
                for (std::size_t d = 0; d < 6; ++d) {
                    term += xu[d] * y[d];
                }
                sums.rightHand.at<double>(u) += term;
            }
        }
    }
    return sums;
}

void setUp(CPSFEst& solver, cv::Size kernel, cv::Size image, float lambda = 0.001f) {
    solver.setup(kernel, image, cv::Point(kernel.width / 2, kernel.height / 2), lambda, 0.0f, 1.0f,
                 1.0f, 1.0f, 1.0f, 1.0f);
}

void expectPlainSums(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask,
                     cv::Size kernel, const Sums& expected) {
    CPSFEst solver;
    setUp(solver, kernel, image.size());
    solver.computeLA(image, blur, mask);
    EXPECT_EQ(solver.pixelCount(), expected.count);
    EXPECT_TRUE(sameBits(solver.normalMatrix(), expected.matrix)) << kernel;
    EXPECT_TRUE(sameBits(solver.rightHandSide(), expected.rightHand)) << kernel;
}

cv::Mat randomImage(cv::Size size, std::mt19937& random) {
    std::uniform_int_distribution<int> level(0, 255);
    cv::Mat image(size, CV_8UC1);
    for (int row = 0; row < image.rows; ++row) {
        std::generate_n(image.ptr(row), image.cols,
                        [&] { return static_cast<unsigned char>(level(random)); });
    }
    return image;
}

/// A mask that selects the given fraction of the pixels.
cv::Mat randomMask(cv::Size size, double fraction, std::mt19937& random) {
    cv::Mat mask = randomImage(size, random);
    for (int row = 0; row < mask.rows; ++row) {
        for (int column = 0; column < mask.cols; ++column) {
            unsigned char& m = mask.at<unsigned char>(row, column);
            m = static_cast<unsigned char>(m < 255.0 * fraction ? m / 2 + 1 : 0);
        }
    }
    return mask;
}

TEST(PSFEst, SumsEqualThePlainLoopOnEveryProcessorVariant) {
    std::mt19937 random(53);
    const cv::Size kernels[] = {{1, 1}, {3, 3}, {5, 9}, {9, 5}, {11, 3}, {13, 13}, {1, 5}};
    for (const cv::Size kernel : kernels) {
        const cv::Size size(2 * kernel.width + 4 + static_cast<int>(random() % 23) + 1,
                            2 * kernel.height + 4 + static_cast<int>(random() % 23) + 1);
        const cv::Mat image = randomImage(size, random);
        const cv::Mat blur = randomImage(size, random);
        const cv::Mat mask = randomMask(size, 0.4, random);
        const Sums expected = plainSums(image, blur, mask, kernel);
        vel::test::forEachTarget([&] { expectPlainSums(image, blur, mask, kernel, expected); });
    }
}

TEST(PSFEst, SumsAreTheSameForEveryNumberOfThreads) {
    std::mt19937 random(54);
    for (const cv::Size kernel : {cv::Size(3, 3), cv::Size(7, 5), cv::Size(9, 9)}) {
        const cv::Size size(71, 83);
        const cv::Mat image = randomImage(size, random);
        const cv::Mat blur = randomImage(size, random);
        const cv::Mat mask = randomMask(size, 0.3, random);
        const Sums expected = plainSums(image, blur, mask, kernel);
        for (const int threads : {1, 2, 3, 5, 16, 100}) {
            SCOPED_TRACE(threads);
            const ThreadCount team(threads);
            expectPlainSums(image, blur, mask, kernel, expected);
        }
    }
}

TEST(PSFEst, LargerKernelsTakeSeveralBatchesAndPanels) {
    std::mt19937 random(55);
    const cv::Size size(64, 72);
    const cv::Mat image = randomImage(size, random);
    const cv::Mat blur = randomImage(size, random);
    const cv::Mat mask = randomMask(size, 0.55, random);
    for (const cv::Size kernel : {cv::Size(17, 17), cv::Size(15, 19), cv::Size(21, 3)}) {
        const Sums expected = plainSums(image, blur, mask, kernel);
        for (const int threads : {1, 2}) {
            const ThreadCount team(threads);
            expectPlainSums(image, blur, mask, kernel, expected);
        }
    }
}

TEST(PSFEst, TheLargestDifferencesDoNotOverflow) {
    cv::Mat checkers(150, 130, CV_8UC1);
    for (int row = 0; row < checkers.rows; ++row) {
        for (int column = 0; column < checkers.cols; ++column) {
            checkers.at<unsigned char>(row, column) = (row + column) % 2 == 0 ? 255 : 0;
        }
    }
    const cv::Mat everywhere(checkers.size(), CV_8UC1, cv::Scalar(255));
    for (const cv::Size kernel : {cv::Size(1, 1), cv::Size(3, 3)}) {
        const Sums expected = plainSums(checkers, checkers, everywhere, kernel);
        vel::test::forEachTarget(
            [&] { expectPlainSums(checkers, checkers, everywhere, kernel, expected); });
    }
    // Only every second pixel, so that all of them are white.
    cv::Mat white(checkers.size(), CV_8UC1);
    white = checkers / 255;
    const Sums expected = plainSums(checkers, checkers, white, cv::Size(1, 1));
    EXPECT_EQ(expected.matrix.at<double>(0, 0), expected.count * 975375.0);
    ASSERT_GT(expected.count, 2201);
    vel::test::forEachTarget(
        [&] { expectPlainSums(checkers, checkers, white, cv::Size(1, 1), expected); });
}

TEST(PSFEst, ImagesMayBePartsOfLargerOnes) {
    std::mt19937 random(56);
    const cv::Rect part(3, 5, 41, 37);
    const cv::Mat image = randomImage(cv::Size(60, 50), random)(part);
    const cv::Mat blur = randomImage(cv::Size(61, 50), random)(part);
    const cv::Mat mask = randomMask(cv::Size(67, 50), 0.5, random)(part);
    expectPlainSums(image, blur, mask, cv::Size(5, 5),
                    plainSums(image, blur, mask, cv::Size(5, 5)));
}

TEST(PSFEst, WeightsOfTheDerivativesChangeNothing) {
    std::mt19937 random(67);
    const cv::Size size(40, 40);
    const cv::Mat image = randomImage(size, random);
    const cv::Mat blur = randomImage(size, random);
    const cv::Mat mask = randomMask(size, 0.5, random);
    const Sums expected = plainSums(image, blur, mask, cv::Size(3, 5));
    for (const float weight : {0.0f, 1.0f, -3.0f, std::nanf("")}) {
        CPSFEst solver;
        solver.setup(cv::Size(3, 5), size, cv::Point(1, 2), 0.001f, weight, weight, weight, weight,
                     weight, weight);
        solver.computeLA(image, blur, mask);
        EXPECT_TRUE(sameBits(solver.normalMatrix(), expected.matrix)) << weight;
        EXPECT_TRUE(sameBits(solver.rightHandSide(), expected.rightHand)) << weight;
    }
}

TEST(PSFEst, ImagesSmallerThanSetUpAreAnExceptionOfTheMatrixLibrary) {
    const cv::Mat whole = cv::Mat::zeros(30, 30, CV_8UC1);
    for (const cv::Size size : {cv::Size(29, 30), cv::Size(30, 29), cv::Size(0, 0)}) {
        const cv::Mat small = cv::Mat::zeros(size, CV_8UC1);
        for (int place = 0; place < 3; ++place) {
            std::array<cv::Mat, 3> images{whole, whole, whole};
            images[static_cast<std::size_t>(place)] = small;
            CPSFEst solver;
            setUp(solver, cv::Size(3, 3), whole.size());
            EXPECT_THROW(solver.computeLA(images[0], images[1], images[2]), cv::Exception);
        }
    }
}

TEST(PSFEst, SumsGrowWithASecondAccumulation) {
    std::mt19937 random(57);
    const cv::Size size(40, 40);
    const cv::Mat image = randomImage(size, random);
    const cv::Mat blur = randomImage(size, random);
    const cv::Mat mask = randomMask(size, 0.5, random);
    const Sums once = plainSums(image, blur, mask, cv::Size(7, 7));
    CPSFEst solver;
    setUp(solver, cv::Size(7, 7), size);
    solver.computeLA8U(image, blur, mask);
    solver.computeLA8U(image, blur, mask);
    EXPECT_TRUE(sameBits(solver.normalMatrix(), cv::Mat(once.matrix * 2.0)));
    EXPECT_TRUE(sameBits(solver.rightHandSide(), cv::Mat(once.rightHand * 2.0)));
    EXPECT_EQ(solver.pixelCount(), once.count);
}

TEST(PSFEst, TheRowOffsetIsHalfTheColumnsAndTheColumnOffsetHalfTheRows) {
    const cv::Size size(40, 50);
    cv::Mat image = cv::Mat::zeros(size, CV_8UC1);
    cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
    mask.at<unsigned char>(25, 20) = 1;
    image.at<unsigned char>(25 - 2, 20 - 4) = 100; // first sample of a patch of 9 rows, 5 columns
    CPSFEst solver;
    setUp(solver, cv::Size(5, 9), size);
    solver.computeLA(image, image, mask);
    EXPECT_EQ(solver.normalMatrix().at<double>(0, 0), 1e4 * 6);
    EXPECT_EQ(solver.normalMatrix().at<double>(1, 1), 0.0);
    // Row 3, column 4 is unknown 4 * 9 + 3.
    image = cv::Scalar(0);
    image.at<unsigned char>(25 - 2 + 3, 20 - 4 + 4) = 100;
    setUp(solver, cv::Size(5, 9), size);
    solver.computeLA(image, image, mask);
    const int unknown = 4 * 9 + 3;
    EXPECT_EQ(solver.normalMatrix().at<double>(unknown, unknown), 1e4 * 6);
    EXPECT_EQ(solver.normalMatrix().at<double>(unknown + 1, unknown + 1), 0.0);
}

TEST(PSFEst, LongThinKernelsLeaveOutPixelsWhosePatchLeavesTheImage) {
    std::mt19937 random(58);
    for (const cv::Size kernel : {cv::Size(31, 1), cv::Size(1, 31), cv::Size(21, 3)}) {
        const cv::Size size(80, 90);
        // On memory of their own exact size, so that a sanitizer sees any read beyond it.
        const cv::Mat image = randomImage(size, random);
        const cv::Mat blur = randomImage(size, random);
        const cv::Mat mask(size, CV_8UC1, cv::Scalar(1));
        const Sums expected = plainSums(image, blur, mask, kernel);
        ASSERT_GT(expected.count, 0);
        expectPlainSums(image, blur, mask, kernel, expected);
    }
}

TEST(PSFEst, AnchorsOutsideTheImageLeaveNothing) {
    std::mt19937 random(59);
    const cv::Size size(30, 30);
    const cv::Mat image = randomImage(size, random);
    for (const int anchor : {-1000, 1000}) {
        CPSFEst solver;
        solver.setup(cv::Size(3, 3), size, cv::Point(anchor, anchor), 0.001f, 0.0f, 1.0f, 1.0f,
                     1.0f, 1.0f, 1.0f);
        solver.computeLA(image, image, image);
        EXPECT_EQ(solver.pixelCount(), 0);
    }
}

TEST(PSFEst, ImagesThatTheMarginsFillLeaveNothingToAccumulate) {
    for (const cv::Size size : {cv::Size(10, 100), cv::Size(100, 10), cv::Size(1, 1)}) {
        const cv::Mat image(size, CV_8UC1, cv::Scalar(200));
        CPSFEst solver;
        setUp(solver, cv::Size(3, 3), size);
        solver.computeLA(image, image, image);
        EXPECT_EQ(solver.pixelCount(), 0);
        EXPECT_EQ(cv::countNonZero(solver.normalMatrix()), 0);
        EXPECT_EQ(cv::countNonZero(solver.computePSF()), 0);
    }
    const cv::Mat image(11, 11, CV_8UC1, cv::Scalar(200));
    CPSFEst solver;
    setUp(solver, cv::Size(3, 3), image.size());
    solver.computeLA(image, image, image);
    EXPECT_EQ(solver.pixelCount(), 1);
}

TEST(PSFEst, WithoutAPixelTheKernelIsZero) {
    const cv::Mat image(40, 40, CV_8UC1, cv::Scalar(200));
    const cv::Mat nothing = cv::Mat::zeros(40, 40, CV_8UC1);
    CPSFEst solver;
    setUp(solver, cv::Size(5, 3), image.size());
    solver.computeLA(image, image, nothing);
    const cv::Mat& kernel = solver.computePSF();
    EXPECT_EQ(kernel.rows, 3);
    EXPECT_EQ(kernel.cols, 5);
    EXPECT_EQ(cv::countNonZero(kernel), 0);
}

TEST(PSFEst, RefusesOtherImageTypes) {
    const cv::Mat bytes = cv::Mat::zeros(30, 30, CV_8UC1);
    for (const int type : {CV_8UC3, CV_16UC1, CV_32FC1, CV_8SC1}) {
        const cv::Mat other = cv::Mat::zeros(30, 30, type);
        for (int place = 0; place < 3; ++place) {
            std::array<cv::Mat, 3> images{bytes, bytes, bytes};
            images[static_cast<std::size_t>(place)] = other;
            CPSFEst solver;
            setUp(solver, cv::Size(3, 3), bytes.size());
            EXPECT_EQ(textOf([&] { solver.computeLA(images[0], images[1], images[2]); }),
                      "CPSFEst::computeLA8U - image/blur/mask.type() != CV_8UC1");
        }
    }
}

TEST(PSFEst, KernelsTooLargeForMemoryAreExceptions) {
    // Unknowns beyond an int; a matrix whose bytes pass 2^64; one whose bytes pass 2^63.
    for (const int side : {50001, 39001, 33001}) {
        CPSFEst solver;
        EXPECT_THROW(setUp(solver, cv::Size(side, side), cv::Size(10, 10)), std::bad_alloc);
    }
}

// ---- progress -------------------------------------------------------------------------------

struct Watch {
    std::vector<int> positions;
    bool onlyThreadZero = true;
};

int32_t watch(int32_t current, int32_t, void* userData) {
    auto& seen = *static_cast<Watch*>(userData);
    seen.positions.push_back(current);
    seen.onlyThreadZero = seen.onlyThreadZero && omp_get_thread_num() == 0;
    return 0;
}

std::vector<int> positionsWhileSumming(cv::Size size, cv::Size kernel, const cv::Mat& mask) {
    Watch seen;
    ProgressRecord account{1000, 1000, watch, &seen, 0};
    CProgressSpan span(&account);
    EXPECT_EQ(span.begin(1.0f, 2), 500);
    seen.positions.clear();
    CPSFEst solver;
    setUp(solver, kernel, size);
    solver.setProgress(&span);
    solver.computeLA(mask, mask, mask);
    EXPECT_EQ(account.current, 500);
    EXPECT_TRUE(seen.onlyThreadZero);
    return seen.positions;
}

TEST(PSFEst, OneThreadAdvancesOnceForEachRow) {
    const ThreadCount one(1);
    for (const int level : {0, 255}) {
        const cv::Mat mask(50, 40, CV_8UC1, cv::Scalar(level));
        // 50 - 2 * 5 - 4 rows; the step of 500 in 40 parts is 12.
        std::vector<int> expected;
        for (int i = 1; i <= 36; ++i) {
            expected.push_back(12 * i);
        }
        EXPECT_EQ(positionsWhileSumming(mask.size(), cv::Size(5, 5), mask), expected);
    }
}

TEST(PSFEst, ATeamAdvancesOnceForEachRowOfThreadZerosShare) {
    const cv::Mat mask(50, 40, CV_8UC1, cv::Scalar(255));
    for (const int threads : {2, 3, 5, 36, 50}) {
        const ThreadCount team(threads);
        const int calls = (36 + threads - 1) / threads;
        const int parts = std::max(1, 40 / threads);
        const std::vector<int> positions = positionsWhileSumming(mask.size(), cv::Size(5, 5), mask);
        ASSERT_EQ(static_cast<int>(positions.size()), calls) << threads;
        for (int i = 0; i < calls; ++i) {
            EXPECT_EQ(positions[static_cast<std::size_t>(i)], (i + 1) * (500 / parts));
        }
    }
}

TEST(PSFEst, RowsAreReportedEvenWhereNoColumnIsLeft) {
    const ThreadCount one(1);
    const cv::Mat narrow(50, 9, CV_8UC1, cv::Scalar(255));
    EXPECT_EQ(positionsWhileSumming(narrow.size(), cv::Size(5, 5), narrow).size(), 36U);
    const cv::Mat low(14, 50, CV_8UC1, cv::Scalar(255));
    EXPECT_TRUE(positionsWhileSumming(low.size(), cv::Size(5, 5), low).empty());
}

int32_t refuse(int32_t current, int32_t, void*) {
    if (current > 100) {
        throw 17;
    }
    return 1;
}

TEST(PSFEst, AFailingCallbackReachesTheCallingThread) {
    const cv::Mat mask(50, 40, CV_8UC1, cv::Scalar(255));
    for (const int threads : {1, 3}) {
        const ThreadCount team(threads);
        int userData = 0;
        ProgressRecord account{1000, 1000, refuse, &userData, 0};
        CProgressSpan span(&account);
        span.begin(1.0f, 2);
        CPSFEst solver;
        setUp(solver, cv::Size(5, 5), mask.size());
        solver.setProgress(&span);
        EXPECT_THROW(solver.computeLA(mask, mask, mask), int);
    }
}

// ---- the solve ------------------------------------------------------------------------------

struct Scene {
    cv::Mat sharp;
    cv::Mat blurred;
    cv::Mat mask;
};

/// Overlapping bright and dark boxes and discs, blurred, with a little noise; the mask selects the
/// neighbourhood of edges.
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

/// The kernel by singular values alone, from sums that have not been solved yet.
cv::Mat bySingularValues(const CPSFEst& solver, cv::Size kernel, float lambda) {
    cv::Mat matrix = solver.normalMatrix().clone();
    for (int i = 0; i < matrix.rows; ++i) {
        matrix.at<double>(i, i) += solver.pixelCount() * 255.0 * double{lambda};
    }
    cv::Mat x;
    cv::solve(matrix, solver.rightHandSide(), x, cv::DECOMP_SVD);
    cv::Mat solved(kernel, CV_32FC1);
    for (int i = 0; i < kernel.width; ++i) {
        for (int j = 0; j < kernel.height; ++j) {
            solved.at<float>(j, i) = static_cast<float>(x.at<double>(i * kernel.height + j));
        }
    }
    return solved;
}

double largestDifferenceToPeak(const cv::Mat& kernel, const cv::Mat& reference) {
    return cv::norm(kernel, reference, cv::NORM_INF) / cv::norm(reference, cv::NORM_INF);
}

TEST(PSFEst, KernelsEqualThoseBySingularValuesToAMillionthOfThePeak) {
    std::mt19937 random(60);
    for (const int side : {1, 3, 5, 7, 9, 13, 17, 31}) {
        const Scene scene = drawnScene(160, side, random);
        CPSFEst solver;
        setUp(solver, cv::Size(side, side), scene.sharp.size());
        solver.computeLA(scene.sharp, scene.blurred, scene.mask);
        const cv::Mat reference = bySingularValues(solver, cv::Size(side, side), 0.001f);
        ASSERT_GT(solver.pixelCount(), 100);
        EXPECT_LE(largestDifferenceToPeak(solver.computePSF(), reference), 1e-6) << side;
    }
}

TEST(PSFEst, KernelsOfNonSquareShapeEqualThoseBySingularValues) {
    std::mt19937 random(61);
    for (const cv::Size kernel : {cv::Size(9, 5), cv::Size(3, 11), cv::Size(15, 1)}) {
        const Scene scene = drawnScene(160, 5, random);
        CPSFEst solver;
        setUp(solver, kernel, scene.sharp.size());
        solver.computeLA(scene.sharp, scene.blurred, scene.mask);
        const cv::Mat reference = bySingularValues(solver, kernel, 0.001f);
        EXPECT_LE(largestDifferenceToPeak(solver.computePSF(), reference), 1e-6);
    }
}

/// Below 1e-10 of the trace singular values take over; both sides of that must be good.
TEST(PSFEst, WeakTikhonovTermsStillGiveTheKernelBySingularValues) {
    std::mt19937 random(62);
    const Scene scene = drawnScene(160, 9, random);
    const cv::Size kernel(9, 9);
    for (const double share : {1.1e-8, 1.1e-10, 0.9e-10, 1e-13, 0.0}) {
        CPSFEst solver;
        setUp(solver, kernel, scene.sharp.size());
        solver.computeLA(scene.sharp, scene.blurred, scene.mask);
        const double trace = cv::trace(solver.normalMatrix())[0];
        const auto lambda = static_cast<float>(share * trace / (255.0 * solver.pixelCount()));
        setUp(solver, kernel, scene.sharp.size(), lambda);
        solver.computeLA(scene.sharp, scene.blurred, scene.mask);
        const cv::Mat reference = bySingularValues(solver, kernel, lambda);
        EXPECT_LE(largestDifferenceToPeak(solver.computePSF(), reference), 1e-6) << share;
    }
}

TEST(PSFEst, SmoothScenesGiveTheKernelBySingularValues) {
    std::mt19937 random(66);
    Scene scene = drawnScene(160, 13, random);
    for (const double sigma : {1.0, 2.0, 4.0}) {
        cv::GaussianBlur(scene.sharp, scene.sharp, cv::Size(), sigma);
        for (const int side : {7, 13}) {
            CPSFEst solver;
            setUp(solver, cv::Size(side, side), scene.sharp.size());
            solver.computeLA(scene.sharp, scene.blurred, scene.mask);
            const cv::Mat reference = bySingularValues(solver, cv::Size(side, side), 0.001f);
            EXPECT_LE(largestDifferenceToPeak(solver.computePSF(), reference), 1e-6) << sigma;
        }
    }
}

/// Flat images have equations of rank 1, the worst condition that the Tikhonov term allows. Every
/// entry of their kernel is known.
TEST(PSFEst, FlatImagesGiveAnEvenKernel) {
    const cv::Mat flat(100, 100, CV_8UC1, cv::Scalar(255));
    for (const int side : {1, 3, 9, 17}) {
        CPSFEst solver;
        setUp(solver, cv::Size(side, side), flat.size());
        solver.computeLA(flat, flat, flat);
        const double entry = 65025.0 / (65025.0 * side * side + 255.0 * double{0.001f});
        const cv::Mat expected(side, side, CV_32FC1, cv::Scalar(entry));
        EXPECT_LE(largestDifferenceToPeak(solver.computePSF(), expected), 1e-6) << side;
    }
}

/// With one unknown the solve is a division.
TEST(PSFEst, TikhonovTermIs255TimesThePixelsTimesTheWeight) {
    std::mt19937 random(68);
    const cv::Size size(40, 30);
    const cv::Mat image = randomImage(size, random);
    const cv::Mat blur = randomImage(size, random);
    const cv::Mat mask = randomMask(size, 0.5, random);
    const Sums sums = plainSums(image, blur, mask, cv::Size(1, 1));
    for (const float lambda : {0.001f, 1.0f, 400.0f}) {
        CPSFEst solver;
        setUp(solver, cv::Size(1, 1), size, lambda);
        solver.computeLA(image, blur, mask);
        const double term = sums.count * 255.0 * static_cast<double>(lambda);
        const double expected =
            sums.rightHand.at<double>(0) / (sums.matrix.at<double>(0, 0) + term);
        EXPECT_FLOAT_EQ(solver.computePSF().at<float>(0, 0), static_cast<float>(expected));
    }
}

TEST(PSFEst, FindsTheBlurOfADrawnScene) {
    std::mt19937 random(63);
    Scene scene = drawnScene(200, 3, random);
    cv::Mat blur = cv::Mat::zeros(5, 5, CV_32FC1);
    blur.at<float>(1, 1) = 0.25f;
    blur.at<float>(2, 2) = 0.5f;
    blur.at<float>(2, 4) = 0.25f;
    cv::filter2D(scene.sharp, scene.blurred, -1, blur);
    CPSFEst solver;
    setUp(solver, cv::Size(5, 5), scene.sharp.size());
    solver.computeLA(scene.sharp, scene.blurred, scene.mask);
    // filter2D correlates, as the model does: the kernel comes back unturned.
    EXPECT_LE(cv::norm(solver.computePSF(), blur, cv::NORM_INF), 0.01);
}

TEST(PSFEst, NaNWeightsDoNotCrash) {
    std::mt19937 random(64);
    const Scene scene = drawnScene(100, 3, random);
    for (const float lambda : {std::nanf(""), std::numeric_limits<float>::infinity(), -1e6f}) {
        CPSFEst solver;
        setUp(solver, cv::Size(3, 3), scene.sharp.size(), lambda);
        solver.computeLA(scene.sharp, scene.blurred, scene.mask);
        EXPECT_EQ(solver.computePSF().rows, 3);
    }
}

} // namespace
