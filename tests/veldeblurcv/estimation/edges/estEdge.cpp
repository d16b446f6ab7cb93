#include "velimproclib/veldeblurcv/estimation/edges/estEdge.h"

#include "tests/support/NothrowNewFails.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "tests/veldeblurcv/estimation/SoftScene.h"
#include "velimproclib/veldeblurcv/estimation/edges/bilateralFilter.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <random>

namespace {

using vel::estEdge;
using vel::test::sameBits;

using Bytes = cv::Mat_<std::uint8_t>;

Bytes noise(int width, int height, unsigned seed = 1) {
    std::mt19937 random(seed);
    Bytes image(height, width);
    std::generate(image.begin(), image.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return image;
}

/// `passes` of the extreme over the 3 by 3 neighbourhood, inside the one-pixel frame.
template <class Extreme>
Bytes plainExtreme(Bytes image, int passes, Extreme&& extreme) {
    for (int pass = 0; pass < passes; ++pass) {
        const Bytes before = image.clone();
        for (int y = 1; y + 1 < image.rows; ++y) {
            for (int x = 1; x + 1 < image.cols; ++x) {
                for (int i = 0; i < 9; ++i) {
                    image(y, x) = extreme(image(y, x), before(y - 1 + i / 3, x - 1 + i % 3));
                }
            }
        }
    }
    return image;
}

Bytes plainShock(const Bytes& image, int passes) {
    const Bytes high = plainExtreme(image.clone(), passes,
                                    [](std::uint8_t a, std::uint8_t b) { return std::max(a, b); });
    const Bytes low = plainExtreme(image.clone(), passes,
                                   [](std::uint8_t a, std::uint8_t b) { return std::min(a, b); });
    Bytes out = image.clone();
    for (int y = 0; y < out.rows; ++y) {
        for (int x = 0; x < out.cols; ++x) {
            const int up = high(y, x) - image(y, x);
            const int down = image(y, x) - low(y, x);
            out(y, x) = up > down ? low(y, x) : high(y, x);
        }
    }
    return out;
}

TEST(EstEdge, ShockStepEqualsThePlainOne) {
    std::mt19937 random(3);
    for (int i = 0; i < 40; ++i) {
        const Bytes image = noise(1 + static_cast<int>(random() % 67),
                                  1 + static_cast<int>(random() % 40), static_cast<unsigned>(i));
        const int passes = 1 + i % 3;
        cv::Mat edge;
        estEdge(image, edge, 0, 5.0f, 1.0f, passes);
        ASSERT_TRUE(sameBits(edge, plainShock(image, passes))) << image.size();
    }
}

TEST(EstEdge, WithoutPassesItIsTheBilateralFilter) {
    const Bytes image = noise(40, 30);
    cv::Mat filtered;
    vel::bilateralFilter(image, filtered, 5, 40.0f, 6.3f);
    cv::Mat edge;
    estEdge(image, edge, 5, 40.0f, 6.3f, 0);
    EXPECT_TRUE(sameBits(edge, filtered));
}

TEST(EstEdge, ShockFollowsTheBilateralFilter) {
    const cv::Mat image = vel::test::softScene(80, 61);
    cv::Mat filtered;
    estEdge(image, filtered, 5, 20.0f, 3.0f, 0);
    cv::Mat edge;
    estEdge(image, edge, 5, 20.0f, 3.0f, 1);
    EXPECT_TRUE(sameBits(edge, plainShock(filtered, 1)));
    EXPECT_FALSE(sameBits(edge, filtered));
}

TEST(EstEdge, WithoutDiameterAndPassesItCopies) {
    const Bytes image = noise(20, 10);
    for (const int d : {0, -1, -5}) {
        for (const int passes : {0, -1}) {
            cv::Mat edge;
            estEdge(image, edge, d, 5.0f, 1.0f, passes);
            EXPECT_TRUE(sameBits(edge, image));
            EXPECT_NE(edge.data, image.data);
        }
    }
}

TEST(EstEdge, BlurredEdgeBecomesAStep) {
    // An edge blurred over three pixels: the pixels nearer to the dark side become dark, the others
    // bright.
    const Bytes row = (Bytes(1, 7) << 20, 20, 50, 110, 170, 200, 200);
    const Bytes image = cv::repeat(row, 3, 1);
    Bytes expected = image.clone();
    const Bytes step = (Bytes(1, 7) << 20, 20, 20, 170, 200, 200, 200);
    step.copyTo(expected.row(1));
    cv::Mat edge;
    estEdge(image, edge, 0, 5.0f, 1.0f, 1);
    EXPECT_TRUE(sameBits(edge, expected)) << edge;
}

TEST(EstEdge, TieMovesThePixelToTheHigherExtreme) {
    Bytes image(3, 3);
    image << 40, 50, 60, 40, 50, 60, 40, 50, 60;
    cv::Mat edge;
    estEdge(image, edge, 0, 5.0f, 1.0f, 1);
    EXPECT_EQ(edge.at<std::uint8_t>(1, 1), 60);
}

TEST(EstEdge, FrameKeepsItsPixels) {
    const Bytes image = noise(9, 7);
    cv::Mat edge;
    estEdge(image, edge, 0, 5.0f, 1.0f, 2);
    cv::Mat changed = edge != image;
    changed(cv::Rect(1, 1, 7, 5)).setTo(0);
    EXPECT_EQ(cv::countNonZero(changed), 0);
}

TEST(EstEdge, SmallestImagesAreSupported) {
    for (int width = 1; width <= 6; ++width) {
        for (int height = 1; height <= 6; ++height) {
            const Bytes image = noise(width, height);
            cv::Mat filtered;
            estEdge(image, filtered, 5, 20.0f, 1.0f, 0);
            cv::Mat edge;
            estEdge(image, edge, 5, 20.0f, 1.0f, 1);
            EXPECT_TRUE(sameBits(edge, plainShock(filtered, 1)));
        }
    }
}

TEST(EstEdge, ImagesWiderThanTheMorphologysStackBufferAreSupported) {
    const Bytes image = noise(5001, 4);
    cv::Mat edge;
    estEdge(image, edge, 0, 5.0f, 1.0f, 1);
    EXPECT_TRUE(sameBits(edge, plainShock(image, 1)));
}

TEST(EstEdge, MemoryExhaustedInASectionIsAnExceptionOfTheCaller) {
    const Bytes image = noise(5001, 4);
    vel::test::forThreadCounts([&] {
        cv::Mat edge;
        const vel::test::NothrowNewFails noMemory;
        EXPECT_THROW(estEdge(image, edge, 0, 5.0f, 1.0f, 1), std::bad_alloc);
    });
    cv::Mat edge;
    estEdge(image, edge, 0, 5.0f, 1.0f, 1);
    EXPECT_TRUE(sameBits(edge, plainShock(image, 1)));
}

TEST(EstEdge, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat image = vel::test::softScene(200, 150);
    cv::Mat expected;
    estEdge(image, expected, 5, 26.0f, 2.7f, 1);
    vel::test::forThreadCounts([&] {
        cv::Mat edge;
        estEdge(image, edge, 5, 26.0f, 2.7f, 1);
        EXPECT_TRUE(sameBits(edge, expected));
    });
}

TEST(EstEdge, EmptyImageIsAnExceptionOfTheMatrixLibrary) {
    cv::Mat edge;
    EXPECT_THROW(estEdge(cv::Mat(0, 0, CV_8UC1), edge, 5, 5.0f, 1.0f, 1), cv::Exception);
}

} // namespace
