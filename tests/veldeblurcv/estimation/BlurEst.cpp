#include "velimproclib/veldeblurcv/estimation/BlurEst.h"

#include "tests/support/digestOf.h"
#include "tests/support/DrawnScene.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/ProgressListener.h"
#include "tests/support/sameBits.h"
#include "tests/support/textOf.h"
#include "tests/support/Threads.h"
#include "tests/veldeblurcv/estimation/SoftScene.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <omp.h>
#include <string>
#include <vector>

namespace {

using vel::CBlurEst;
using vel::CProgressSpan;
using vel::test::blurredWith;
using vel::test::digestOf;
using vel::test::drawnScene;
using vel::test::Listener;
using vel::test::plainDiscKernel;
using vel::test::sameBits;
using vel::test::softScene;
using vel::test::textOf;
using vel::test::unsolvedKernel;

/// An estimator with a silent progress.
struct Estimator : CBlurEst {
    CProgressSpan silent;

    Estimator() = default;
    Estimator(const cv::Mat& image, const cv::Mat& kernel) { setup(image, kernel, silent); }

    /// Runs all levels, with the settings that the test chose.
    void estimateLevels() {
        for (int level = m_pyrLvls; level >= 0; --level) {
            estimateLvl(level);
        }
    }
    /// Kernels and latent images of all levels.
    std::string digest() const {
        std::string text;
        for (std::size_t level = 0; level <= static_cast<std::size_t>(m_pyrLvls); ++level) {
            text += digestOf({m_kPyr[level], m_imPyr[level]}) + ' ';
        }
        return text;
    }
};

cv::Mat estimatedKernel(const cv::Mat& image, cv::Size size, float strength) {
    const cv::Mat kernel = unsolvedKernel(size.width, size.height);
    Estimator estimator(image, kernel);
    EXPECT_EQ(estimator.estimate(strength), 1);
    return kernel;
}

bool isNaNThroughout(const cv::Mat& kernel) {
    return cv::countNonZero(kernel == kernel) == 0;
}

/// The properties of every kernel that the estimator found.
void expectNormalisedKernel(const cv::Mat& kernel) {
    double least = -1.0;
    cv::minMaxLoc(kernel, &least);
    EXPECT_GE(least, 0.0);
    EXPECT_NEAR(cv::sum(kernel)[0], 1.0, 1e-5);
}

// ---- set-up ---------------------------------------------------------------------------------

TEST(BlurEst, StartsWithItsFixedSettings) {
    const CBlurEst estimator;
    EXPECT_EQ(estimator.m_psfLambda, 0.001f);
    EXPECT_EQ(estimator.m_psfW0, 0.0f);
    EXPECT_EQ(estimator.m_psfW1, 1.0f);
    EXPECT_EQ(estimator.m_psfW2, 1.0f);
    EXPECT_EQ(estimator.m_edgeGain, 1.0f);
    EXPECT_EQ(estimator.m_edgeSmooth, 0.0f);
    EXPECT_EQ(estimator.m_maskPerTap, 2000);
    EXPECT_EQ(estimator.m_kFloor, 0.05f);
}

TEST(BlurEst, FinestLevelSharesTheCallersImageAndKernel) {
    const cv::Mat image = softScene(70, 60);
    const cv::Mat kernel = unsolvedKernel(5, 5);
    const Estimator estimator(image, kernel);
    EXPECT_EQ(estimator.m_pyrLvls, 1);
    EXPECT_EQ(estimator.m_imPyr[0].data, image.data);
    EXPECT_EQ(estimator.m_kPyr[0].data, kernel.data);
}

TEST(BlurEst, OtherImageTypesAndKernelsWithoutDataAreRefused) {
    CProgressSpan silent;
    CBlurEst estimator;
    const auto refusal = [&](const cv::Mat& image, const cv::Mat& kernel) {
        return textOf([&] { estimator.setup(image, kernel, silent); });
    };
    for (const int type : {CV_8UC3, CV_16UC1, CV_32FC1, CV_8SC1}) {
        EXPECT_EQ(refusal(cv::Mat(9, 9, type), unsolvedKernel(3, 3)),
                  "CBlurEst:setup - imB is wrong type");
    }
    EXPECT_EQ(refusal(cv::Mat(9, 9, CV_8UC1), cv::Mat()), "CBlurEst:setup - kernel.empty()");
    EXPECT_EQ(refusal(cv::Mat(9, 9, CV_32FC1), cv::Mat()), "CBlurEst:setup - imB is wrong type");
}

TEST(BlurEst, KernelBeyondMemoryIsAnException) {
    Estimator estimator(cv::Mat(40, 40, CV_8UC1, cv::Scalar(0)), unsolvedKernel(4001, 3001));
    EXPECT_ANY_THROW(estimator.estimate(0.0f));
}

// ---- levels ---------------------------------------------------------------------------------

TEST(BlurEstLevel, KernelsAndLatentImagesAreThoseOfTheDigest) {
    for (const auto& [strength, digest] :
         {std::pair{0.0f, "34D70232A963CA45 8D21CDA3ADC1039E 5427A66148FB9807 "},
          {0.7f, "D96F2D2FB3F32317 8D21CDA3ADC1039E 5427A66148FB9807 "}}) {
        Estimator estimator(softScene(150, 131), unsolvedKernel(7, 11));
        ASSERT_EQ(estimator.m_pyrLvls, 2);
        EXPECT_EQ(estimator.estimate(strength), 1);
        EXPECT_EQ(estimator.digest(), digest);
    }
}

/// The coarsest level is the first to halve the image below 32 pixels, and keeps the narrow reach
/// of coarsest levels although its kernel is large.
TEST(BlurEstLevel, LargeKernelsOnSmallImagesAreThoseOfTheDigest) {
    Estimator estimator(softScene(62, 60), unsolvedKernel(15, 15));
    ASSERT_EQ(estimator.m_pyrLvls, 1);
    ASSERT_EQ(estimator.m_kPyr[1].size(), cv::Size(7, 7));
    estimator.estimateLevels();
    EXPECT_EQ(estimator.digest(), "30EF3588D6FF12A1 6DDA7A36D80DB8CF ");
}

TEST(BlurEstLevel, PixelsAreSelectedInProportionToTheKernelsSide) {
    const auto kernelOf = [](int perTap) {
        const cv::Mat kernel = unsolvedKernel(5, 7);
        Estimator estimator(softScene(150, 131), kernel);
        estimator.m_maskPerTap = perTap;
        estimator.estimateLevels();
        return kernel;
    };
    EXPECT_EQ(digestOf({kernelOf(40), kernelOf(400)}), "1AF7AE1C27E29B21");
    // More pixels than an image has are all of them.
    EXPECT_TRUE(sameBits(kernelOf(2000), kernelOf(std::numeric_limits<int>::max())));
}

TEST(BlurEstLevel, GainScalesTheReachInGreyLevelsDownToSix) {
    const auto digestFor = [](float gain) {
        Estimator estimator(softScene(150, 131), unsolvedKernel(5, 5));
        estimator.m_edgeGain = gain;
        estimator.estimateLevels();
        return estimator.digest();
    };
    EXPECT_EQ(digestFor(0.5f), "6DDB983CA464FFC4 4E9FEF2EC660B6EB ");
    EXPECT_EQ(digestFor(0.01f), "8E0FAEF0E0185439 10C91D122B48A24C ");
    EXPECT_EQ(digestFor(0.001f), digestFor(0.01f));
}

TEST(BlurEstLevel, EachLevelStartsWithAReachOfItsOwn) {
    std::vector<std::string> digests;
    for (int level = 1; level < CBlurEst::kMostLevels; ++level) {
        const auto index = static_cast<std::size_t>(level);
        Estimator estimator(softScene(9, 9), unsolvedKernel(3, 3));
        estimator.m_pyrLvls = level;
        estimator.m_imPyr[index] = softScene(90, 80);
        estimator.m_kPyr[index] = unsolvedKernel(3, 3);
        estimator.estimateLvl(level);
        digests.push_back(digestOf({estimator.m_kPyr[index], estimator.m_imPyr[index]}));
    }
    const std::vector<std::string> expected{
        "0110CF2F4BCC408F", "11C2FC5D7133E419", "93D7F29F73D0948B", "13CAB22E793713D2",
        "E372204258F7AECD", "909C590AFCAB43F3", "D5198244A9C798A7"};
    EXPECT_EQ(digests, expected);
}

TEST(BlurEstLevel, FinestLevelLeavesTheCallersImageAlone) {
    const cv::Mat image = softScene(70, 60);
    const cv::Mat before = image.clone();
    estimatedKernel(image, cv::Size(5, 5), 1.0f);
    EXPECT_TRUE(sameBits(image, before));
}

TEST(BlurEstLevel, CoarserLevelsBecomeSharper) {
    const cv::Mat blurred =
        blurredWith(drawnScene(cv::Size(220, 200), CV_8UC1), plainDiscKernel(9, 3.5));
    Estimator estimator(blurred, unsolvedKernel(9, 9));
    const cv::Mat before = estimator.m_imPyr[1].clone();
    estimator.estimate(0.0f);
    const auto contrast = [](const cv::Mat& image) {
        const int columns = image.cols - 1;
        return cv::norm(image.colRange(0, columns), image.colRange(1, columns + 1), cv::NORM_L2);
    };
    EXPECT_GT(contrast(estimator.m_imPyr[1]), 1.2 * contrast(before));
}

// ---- the whole estimation -------------------------------------------------------------------

TEST(BlurEstEstimate, FindsTheDiscThatBlurredAScene) {
    const cv::Mat disc = plainDiscKernel(9, 2.5);
    const cv::Mat blurred = blurredWith(drawnScene(cv::Size(220, 200), CV_8UC1), disc);
    const cv::Mat kernel = estimatedKernel(blurred, disc.size(), 0.5f);
    expectNormalisedKernel(kernel);
    EXPECT_LE(cv::norm(kernel, disc, cv::NORM_L2), 0.5 * cv::norm(disc, cv::NORM_L2));
}

TEST(BlurEstEstimate, KernelOfOnePixelIsOne) {
    const cv::Mat kernel = estimatedKernel(softScene(90, 80), cv::Size(1, 1), 0.0f);
    EXPECT_EQ(kernel.at<float>(0, 0), 1.0f);
}

TEST(BlurEstEstimate, StrengthUpToOneTenthIsOff) {
    const cv::Mat image = softScene(90, 80);
    const auto kernelOf = [&](float strength) {
        return estimatedKernel(image, cv::Size(5, 5), strength);
    };
    EXPECT_TRUE(sameBits(kernelOf(0.0f), kernelOf(0.09f)));
    EXPECT_TRUE(sameBits(kernelOf(0.0f), kernelOf(std::numeric_limits<float>::quiet_NaN())));
    EXPECT_FALSE(sameBits(kernelOf(0.0f), kernelOf(0.5f)));
}

TEST(BlurEstEstimate, EarlierContentsOfTheKernelDoNotInfluenceIt) {
    const cv::Mat image = softScene(90, 80);
    cv::Mat kernel(5, 5, CV_32FC1, cv::Scalar(std::numeric_limits<float>::quiet_NaN()));
    Estimator estimator(image, kernel);
    estimator.estimate(0.5f);
    EXPECT_TRUE(sameBits(kernel, estimatedKernel(image, cv::Size(5, 5), 0.5f)));
}

TEST(BlurEstEstimate, ImageWithoutAnEdgeGivesAKernelOfNotANumberEntries) {
    const cv::Mat flat(80, 90, CV_8UC1, cv::Scalar(100));
    EXPECT_TRUE(isNaNThroughout(estimatedKernel(flat, cv::Size(7, 5), 1.0f)));
}

TEST(BlurEstEstimate, SmallestImagesGiveNotANumberForAnyKernelSides) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 3), cv::Size(3, 3),
                                cv::Size(5, 4), cv::Size(17, 16)}) {
        for (const cv::Size kernel :
             {cv::Size(1, 1), cv::Size(3, 3), cv::Size(9, 1), cv::Size(1, 9), cv::Size(41, 41)}) {
            EXPECT_TRUE(
                isNaNThroughout(estimatedKernel(softScene(size.width, size.height), kernel, 1.0f)))
                << size << kernel;
        }
    }
}

TEST(BlurEstEstimate, ImageOfOneSmallLevelIsEnoughForASmallKernel) {
    expectNormalisedKernel(estimatedKernel(softScene(31, 33), cv::Size(3, 3), 2.0f));
}

TEST(BlurEstEstimate, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat blurred = softScene(170, 140);
    const cv::Mat expected = estimatedKernel(blurred, cv::Size(5, 7), 0.8f);
    expectNormalisedKernel(expected);
    vel::test::forThreadCounts(
        [&] { EXPECT_TRUE(sameBits(estimatedKernel(blurred, cv::Size(5, 7), 0.8f), expected)); });
}

// ---- progress -------------------------------------------------------------------------------

/// Notes the counter where shares begin: only there a call is one ahead of it.
struct Shares {
    ProgressRecord account;
    std::vector<int32_t> begins;

    static int32_t note(int32_t current, int32_t, void* userData) {
        auto& self = *static_cast<Shares*>(userData);
        if (current != self.account.current) {
            EXPECT_EQ(current, self.account.current + 1);
            self.begins.push_back(self.account.current);
        }
        return 1;
    }
};

/// The counter at the beginning of each level and at the end.
std::vector<int32_t> levelBounds(int32_t total, cv::Size kernel) {
    Shares shares{{total, 1000000000, &Shares::note, &shares, 0}, {}};
    {
        CProgressSpan span(&shares.account);
        CBlurEst estimator;
        estimator.setup(cv::Mat(70, 70, CV_8UC1, cv::Scalar(50)),
                        unsolvedKernel(kernel.width, kernel.height), span);
        estimator.estimate(0.0f);
    }
    std::vector<int32_t> bounds = shares.begins;
    bounds.push_back(shares.account.current);
    return bounds;
}

/// Weights 1, 1/4 and 1/9 are 36, 9 and 4 of 49 parts. In doubles, rounded once to single, 4 / 49
/// of 49 falls short of 4 and is truncated; the others do not.
TEST(BlurEstProgress, SharesOfTheLevelsAreRoundedOnceToSingle) {
    EXPECT_EQ(levelBounds(49, {15, 15}), (std::vector<int32_t>{0, 3, 3 + 9, 3 + 9 + 36}));
    EXPECT_EQ(levelBounds(100, {3, 3}), (std::vector<int32_t>{0, 100}));
    EXPECT_EQ(levelBounds(500000000, {5, 5}),
              (std::vector<int32_t>{0, 100000001, 100000001 + 400000005}));
}

TEST(BlurEstProgress, CountedIterationsChangeTheStepsAlone) {
    const cv::Mat blurred = softScene(70, 60);
    const auto estimated = [&](int iterations, Listener& listener) {
        ProgressRecord account = listener.record(9000, 100000);
        CProgressSpan span(&account);
        const cv::Mat kernel = unsolvedKernel(3, 3);
        CBlurEst estimator;
        estimator.setup(blurred, kernel, span);
        estimator.m_lvlIters.fill(iterations);
        estimator.estimate(0.0f);
        return kernel;
    };
    Listener three;
    Listener thirty;
    EXPECT_TRUE(sameBits(estimated(3, three), estimated(30, thirty)));
    EXPECT_EQ(three.heard[1], 1000);
    EXPECT_EQ(thirty.heard[1], 100);
}

int32_t countOfThreadZero(int32_t, int32_t, void* userData) {
    EXPECT_EQ(omp_get_thread_num(), 0);
    ++*static_cast<int*>(userData);
    return 1;
}

TEST(BlurEstProgress, OnlyThreadNumberZeroCallsBack) {
    const cv::Mat blurred = softScene(100, 90);
    vel::test::forThreadCounts([&] {
        int calls = 0;
        ProgressRecord account{1000, 1000, countOfThreadZero, &calls, 0};
        CProgressSpan span(&account);
        CBlurEst estimator;
        estimator.setup(blurred.clone(), unsolvedKernel(5, 5), span);
        estimator.estimate(0.0f);
        EXPECT_GT(calls, 30);
    });
}

} // namespace
