#include "velimproclib/veldeblurcv/estimation/lumaToMat.h"

#include "tests/support/GuardedPlane.h"
#include "tests/support/Threads.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using vel::lumaToMat;
using vel::test::GuardedPlane;

template <class Sample>
PlaneRecord recordOf(const GuardedPlane<Sample>& image, std::int32_t format) {
    return {format, image.data(), image.step(), image.width() / 3, image.height()};
}

/// The definition for one pixel of `image`.
template <class Sample>
int plainLuminance(const GuardedPlane<Sample>& image, int x, int y) {
    std::array<double, 3> weights{0.299, 0.587, 0.114};
    if (sizeof(Sample) == 2) {
        for (double& weight : weights) {
            weight = static_cast<double>(static_cast<float>(weight / 128.0));
        }
    }
    double sum = 0.0;
    for (int c = 0; c < 3; ++c) {
        sum += weights[static_cast<std::size_t>(c)] * image.at(3 * x + c, y);
    }
    const float single = static_cast<float>(sum);
    return single > 255.0f ? 255 : static_cast<int>(single);
}

template <class Sample>
class LumaToMat : public testing::Test {};

using Samples = testing::Types<std::uint8_t, std::uint16_t>;
TYPED_TEST_SUITE(LumaToMat, Samples);

template <class Sample>
constexpr std::int32_t kFormat = sizeof(Sample) == 1 ? psC3U8 : psC3U16;

TYPED_TEST(LumaToMat, EqualsThePlainSumForEverySizeStepAndStart) {
    std::mt19937 random(1);
    for (int i = 0; i < 80; ++i) {
        const int width = 1 + static_cast<int>(random() % 67);
        const int height = 1 + static_cast<int>(random() % 20);
        GuardedPlane<TypeParam> image(3 * width, height, static_cast<int>(random() % 9),
                                      static_cast<int>(random() % 8));
        image.fill([&] { return random() >> 7; });
        cv::Mat luminance;
        lumaToMat(recordOf(image, kFormat<TypeParam>), luminance);
        ASSERT_EQ(luminance.size(), cv::Size(width, height));
        ASSERT_EQ(luminance.type(), CV_8UC1);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(luminance.at<std::uint8_t>(y, x), plainLuminance(image, x, y));
            }
        }
        ASSERT_TRUE(image.intact());
    }
}

TYPED_TEST(LumaToMat, IsTheSameForEveryNumberOfThreads) {
    GuardedPlane<TypeParam> image(3 * 301, 97);
    std::mt19937 random(2);
    image.fill([&] { return random() >> 7; });
    cv::Mat expected;
    lumaToMat(recordOf(image, kFormat<TypeParam>), expected);
    vel::test::forThreadCounts([&] {
        cv::Mat luminance;
        lumaToMat(recordOf(image, kFormat<TypeParam>), luminance);
        EXPECT_EQ(cv::countNonZero(luminance != expected), 0);
    });
}

TYPED_TEST(LumaToMat, ImageBeyondMemoryIsAnExceptionOfTheMatrixLibrary) {
    const PlaneRecord image{kFormat<TypeParam>, nullptr, 0, 0x7fffffff, 0x7fffffff};
    cv::Mat luminance;
    EXPECT_THROW(lumaToMat(image, luminance), cv::Exception);
}

template <class Sample>
int luminanceOf(std::array<Sample, 3> pixel, std::int32_t format) {
    cv::Mat luminance;
    lumaToMat({format, pixel.data(), sizeof pixel, 1, 1}, luminance);
    return luminance.at<std::uint8_t>(0, 0);
}

int eightBits(std::uint8_t r, std::uint8_t g, std::uint8_t b) {
    return luminanceOf<std::uint8_t>({r, g, b}, psC3U8);
}

int sixteenBits(std::uint16_t r, std::uint16_t g, std::uint16_t b, std::int32_t format = psC3U16) {
    return luminanceOf<std::uint16_t>({r, g, b}, format);
}

TEST(LumaToMatValues, WeightsFollowTheSamplesInMemoryOrderAndTheSumIsTruncated) {
    EXPECT_EQ(eightBits(255, 0, 0), 76);  // 76.245
    EXPECT_EQ(eightBits(0, 255, 0), 149); // 149.685
    EXPECT_EQ(eightBits(0, 0, 255), 29);  // 29.07
    EXPECT_EQ(eightBits(1, 1, 0), 0);     // 0.886
    EXPECT_EQ(eightBits(0, 0, 0), 0);
    EXPECT_EQ(eightBits(255, 255, 255), 255);
}

TEST(LumaToMatValues, GreysKeepTheirLevelAlthoughTheirWeightsAreInexact) {
    for (int level = 0; level < 256; ++level) {
        const auto eight = static_cast<std::uint8_t>(level);
        const auto sixteen = static_cast<std::uint16_t>(level * 128);
        EXPECT_EQ(eightBits(eight, eight, eight), level);
        EXPECT_EQ(sixteenBits(sixteen, sixteen, sixteen), level);
    }
}

TEST(LumaToMatValues, SixteenBitsAreReducedFromTheFifteenBitScale) {
    EXPECT_EQ(sixteenBits(12800, 12800, 12800), 100);
    EXPECT_EQ(sixteenBits(12799, 12799, 12799), 99);
    EXPECT_EQ(sixteenBits(32767, 0, 0), 76);
}

/// Sums this close to an integer fall on its other side when one weight is a double.
TEST(LumaToMatValues, WeightsOfSixteenBitsAreSingles) {
    EXPECT_EQ(sixteenBits(17949, 7828, 57458), 128);
    EXPECT_EQ(sixteenBits(1, 17358, 55461), 129);
    EXPECT_EQ(sixteenBits(17949, 8952, 53916), 131);
}

TEST(LumaToMatValues, WhiteAndAboveAreLimitedToTheLargestByte) {
    EXPECT_EQ(sixteenBits(32768, 32768, 32768), 255); // 256 before the cut
    EXPECT_EQ(sixteenBits(65535, 65535, 65535), 255);
}

TEST(LumaToMatValues, EveryFormatButTheEightBitOneIsReadAsSixteenBits) {
    for (const std::int32_t format : {0, 2, 3, 4, 5, 6, 7, 8, -1, 99}) {
        EXPECT_EQ(sixteenBits(12800, 12800, 12800, format), 100) << format;
    }
}

} // namespace
