#include "hosts/command/kernels/BlurKernel.h"

#include "hosts/command/terminal/Failure.h"
#include "tests/hosts/command/failureText.h"

#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <utility>

namespace {

using velorn::AnalyticBlur;
using velorn::asStored;
using velorn::BlurKernel;
using velorn::checkedKernel;
using velorn::Failure;
using velorn::makeKernel;
using Shape = velorn::AnalyticBlur::Shape;

double sumOf(const BlurKernel& kernel) {
    return std::accumulate(kernel.weights.begin(), kernel.weights.end(), 0.0);
}

TEST(BlurKernel, ShapesHaveTheirSizesAndSumToOne) {
    const BlurKernel gaussian = makeKernel({Shape::Gaussian, 1.5f, 0.0f});
    EXPECT_EQ(gaussian.width, 11);
    EXPECT_EQ(gaussian.height, 11);
    EXPECT_NEAR(sumOf(gaussian), 1.0, 1e-5);
    const BlurKernel disc = makeKernel({Shape::Disc, 4.0f, 0.0f});
    EXPECT_EQ(disc.width, 9);
    EXPECT_NEAR(sumOf(disc), 1.0, 1e-5);
    const BlurKernel motion = makeKernel({Shape::Motion, 5.0f, 0.0f});
    EXPECT_EQ(motion.width, 5);
    EXPECT_EQ(motion.height, 1);
    EXPECT_EQ(motion.weights, std::vector<float>(5, 0.2f));
}

TEST(BlurKernel, NumberOfWeightsMatchesTheSides) {
    for (const float angle : {0.0f, 30.0f, 90.0f, 135.0f, -45.0f}) {
        const BlurKernel motion = makeKernel({Shape::Motion, 20.0f, angle});
        EXPECT_EQ(motion.weights.size(), static_cast<std::size_t>(motion.width * motion.height));
    }
}

TEST(BlurKernel, ExtentsThatGiveNoKernelAreRefused) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float extent : {0.0f, -1.0f, nan}) {
        EXPECT_THROW(makeKernel({Shape::Gaussian, extent, 0.0f}), Failure);
        EXPECT_THROW(makeKernel({Shape::Disc, extent, 0.0f}), Failure);
        EXPECT_THROW(makeKernel({Shape::Motion, extent, 0.0f}), Failure);
    }
    EXPECT_THROW(makeKernel({Shape::Motion, 5.0f, nan}), Failure);
    EXPECT_THROW(makeKernel({Shape::Gaussian, 1e9f, 0.0f}), Failure);
    EXPECT_THROW(makeKernel({Shape::Disc, std::numeric_limits<float>::infinity(), 0.0f}), Failure);
}

/// The displayed row and column of the element at (row, column) of a stored picture with `height`
/// rows and `width` columns.
std::pair<int, int> displayed(int orientation, int row, int column, int height, int width) {
    switch (orientation) {
    case 2:
        return {row, width - 1 - column};
    case 3:
        return {height - 1 - row, width - 1 - column};
    case 4:
        return {height - 1 - row, column};
    case 5:
        return {column, row};
    case 6:
        return {column, height - 1 - row};
    case 7:
        return {width - 1 - column, height - 1 - row};
    case 8:
        return {width - 1 - column, row};
    default:
        return {row, column};
    }
}

TEST(BlurKernel, StoredKernelIsDisplayedAsTheOriginal) {
    const BlurKernel wanted{3, 5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const BlurKernel stored = asStored(wanted, orientation);
        EXPECT_EQ(stored.width, orientation < 5 ? 3 : 5);
        EXPECT_EQ(stored.height, orientation < 5 ? 5 : 3);
        for (int r = 0; r < stored.height; ++r) {
            for (int c = 0; c < stored.width; ++c) {
                const auto [row, column] =
                    displayed(orientation, r, c, stored.height, stored.width);
                EXPECT_EQ(stored.at(r, c), wanted.at(row, column)) << orientation;
            }
        }
    }
}

TEST(BlurKernel, HorizontalMotionOfATurnedPictureIsVerticalInTheFile) {
    const BlurKernel motion = makeKernel({Shape::Motion, 9.0f, 0.0f});
    const BlurKernel stored = asStored(motion, 6);
    EXPECT_EQ(stored.width, 1);
    EXPECT_EQ(stored.height, 9);
}

TEST(BlurKernel, AsShownIsTheInverseOfAsStored) {
    std::vector<float> weights(15);
    std::iota(weights.begin(), weights.end(), 1.0f);
    const BlurKernel kernel{5, 3, weights};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const BlurKernel back = velorn::asShown(asStored(kernel, orientation), orientation);
        EXPECT_EQ(back.width, 5) << orientation;
        EXPECT_EQ(back.weights, weights) << orientation;
    }
}

TEST(BlurKernel, LibraryKernelKeepsTheWeights) {
    const BlurKernel kernel{3, 1, {0.5f, 0.25f, 0.25f}};
    const BlurKernel back = velorn::blurKernelOf(velorn::libraryKernel(kernel));
    EXPECT_EQ(back.width, 3);
    EXPECT_EQ(back.height, 1);
    EXPECT_EQ(back.weights, kernel.weights);
}

TEST(BlurKernel, WeightsAreScaledToTheSumOne) {
    const BlurKernel kernel = checkedKernel({3, 1, {1.0f, 2.0f, 1.0f}}, "k");
    EXPECT_EQ(kernel.weights, (std::vector<float>{0.25f, 0.5f, 0.25f}));
}

TEST(BlurKernel, SumThatDiffersFromOneByRoundingIsKept) {
    const std::vector<float> weights{0.3333333f, 0.3333333f, 0.3333333f};
    EXPECT_EQ(checkedKernel({3, 1, weights}, "k").weights, weights);
}

std::string failureOf(BlurKernel kernel) {
    return vel::test::failureText([&] { checkedKernel(std::move(kernel), "k"); });
}

TEST(BlurKernel, UnusableKernelsAreRefusedWithTheReason) {
    EXPECT_EQ(failureOf({2, 1, {0.5f, 0.5f}}),
              "k: the kernel is 2 by 1, but both sides must be odd");
    EXPECT_NE(failureOf({1, 1, {std::numeric_limits<float>::infinity()}}).find("finite"),
              std::string::npos);
    EXPECT_NE(failureOf({1, 1, {std::numeric_limits<float>::quiet_NaN()}}).find("finite"),
              std::string::npos);
    EXPECT_NE(failureOf({3, 1, {1.0f, 0.0f, -1.0f}}).find("is not positive"), std::string::npos);
    EXPECT_NE(failureOf({1, 1, {-1.0f}}).find("is not positive"), std::string::npos);
}

} // namespace
