#include "velimproclib/veldeblurcv/estimation/edges/bilateralFilter.h"

#include "tests/support/digestOf.h"
#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "tests/veldeblurcv/estimation/SoftScene.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <utility>

namespace {

using vel::bilateralFilter;
using vel::test::digestOf;
using vel::test::sameBits;
using vel::test::softScene;

using Bytes = cv::Mat_<std::uint8_t>;

Bytes noise(int width, int height, unsigned seed = 1) {
    std::mt19937 random(seed);
    Bytes image(height, width);
    for (std::uint8_t& pixel : image) {
        pixel = static_cast<std::uint8_t>(random());
    }
    return image;
}

cv::Mat filtered(const cv::Mat& image, int diameter, float sigmaColor, float sigmaSpace) {
    cv::Mat out;
    bilateralFilter(image, out, diameter, sigmaColor, sigmaSpace);
    return out;
}

/// The definition in double precision.
double plainPixel(const Bytes& image, int x, int y, int radius, double sigmaColor,
                  double sigmaSpace) {
    double sum = 0.0;
    double weights = 0.0;
    for (int dy = -radius; dy <= radius; ++dy) {
        for (int dx = -radius; dx <= radius; ++dx) {
            if (dx * dx + dy * dy > radius * radius) {
                continue;
            }
            const double pixel =
                image(cv::borderInterpolate(y + dy, image.rows, cv::BORDER_REFLECT_101),
                      cv::borderInterpolate(x + dx, image.cols, cv::BORDER_REFLECT_101));
            const double step = pixel - image(y, x);
            const double weight = std::exp(-0.5 * step * step / (sigmaColor * sigmaColor) -
                                           0.5 * (dx * dx + dy * dy) / (sigmaSpace * sigmaSpace));
            sum += weight * pixel;
            weights += weight;
        }
    }
    return sum / weights;
}

void expectDefinition(const Bytes& image, int diameter, float sigmaColor, float sigmaSpace) {
    const cv::Mat out = filtered(image, diameter, sigmaColor, sigmaSpace);
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            const double expected =
                plainPixel(image, x, y, std::max(diameter / 2, 1), static_cast<double>(sigmaColor),
                           static_cast<double>(sigmaSpace));
            ASSERT_NEAR(out.at<std::uint8_t>(y, x), expected, 0.51) << x << ' ' << y;
        }
    }
}

TEST(BilateralFilter, IsTheRoundedMeanOfTheDefinition) {
    for (const auto& [sigmaColor, sigmaSpace] :
         {std::pair{80.0f, 1.0f}, {10.0f, 1.0f}, {40.0f, 6.3f}, {6.0f, 0.5f}}) {
        expectDefinition(noise(41, 23), 5, sigmaColor, sigmaSpace);
    }
    for (const int diameter : {1, 2, 3, 4, 7}) {
        expectDefinition(noise(20, 15), diameter, 60.0f, 2.0f);
    }
}

TEST(BilateralFilter, SmallestImagesReflectTheirBorder) {
    for (int width = 1; width <= 6; ++width) {
        for (int height = 1; height <= 6; ++height) {
            expectDefinition(noise(width, height), 5, 60.0f, 2.0f);
        }
    }
}

TEST(BilateralFilter, ResultsAreThoseOfTheDigestOnEveryProcessorVariant) {
    const cv::Mat scene = softScene(131, 90);
    vel::test::forEachTarget([&] {
        EXPECT_EQ(digestOf({filtered(scene, 5, 80.0f, 1.0f), filtered(scene, 5, 20.0f, 6.3f)}),
                  "EF076EAAAD06EBAC");
    });
}

/// Fused multiply-adds would turn one or two of these pixels. The narrow image has no whole vector,
/// the wide one no rest.
TEST(BilateralFilter, ProductsAreRoundedBeforeTheyAreAdded) {
    vel::test::forEachTarget([&] {
        EXPECT_EQ(digestOf(filtered(noise(3, 4000, 9), 5, 50.0f, 1.0f)), "7761143D3DA18B75");
        EXPECT_EQ(digestOf(filtered(noise(4000, 3, 5), 5, 80.0f, 1.8f)), "FC443E5D1D9493C1");
    });
}

TEST(BilateralFilter, SigmasOfZeroAndBelowActAsOne) {
    const cv::Mat image = noise(30, 20);
    const cv::Mat expected = filtered(image, 5, 1.0f, 1.0f);
    for (const float sigma : {0.0f, -3.0f}) {
        EXPECT_TRUE(sameBits(filtered(image, 5, sigma, 1.0f), expected));
        EXPECT_TRUE(sameBits(filtered(image, 5, 1.0f, sigma), expected));
    }
}

TEST(BilateralFilter, PartOfALargerImageEndsAtItsOwnBorder) {
    const cv::Mat part = noise(60, 50)(cv::Rect(7, 5, 33, 21));
    EXPECT_TRUE(sameBits(filtered(part, 5, 60.0f, 2.0f), filtered(part.clone(), 5, 60.0f, 2.0f)));
}

TEST(BilateralFilter, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat image = noise(70, 53);
    const cv::Mat expected = filtered(image, 5, 60.0f, 2.0f);
    vel::test::forThreadCounts(
        [&] { EXPECT_TRUE(sameBits(filtered(image, 5, 60.0f, 2.0f), expected)); });
}

TEST(BilateralFilter, EmptyImagesAndOtherTypesAreExceptionsOfTheMatrixLibrary) {
    EXPECT_THROW(filtered(cv::Mat(0, 0, CV_8UC1), 5, 5.0f, 1.0f), cv::Exception);
    EXPECT_THROW(filtered(cv::Mat::zeros(9, 9, CV_16UC1), 5, 5.0f, 1.0f), cv::Exception);
}

} // namespace
