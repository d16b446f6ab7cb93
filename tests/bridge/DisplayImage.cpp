#include "velimproclib/bridge/DisplayImage.h"

#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

namespace {

using namespace vel;
using vel::test::GuardedPlane;

constexpr std::uint8_t kUntouched = 77;

/// A host image of random elements, three per pixel, with odd steps and start addresses.
template <class Element>
struct Picture {
    GuardedPlane<Element> elements;

    Picture(int width, int height, std::mt19937& random)
        : elements(3 * width, height, static_cast<int>(random() % 9),
                   static_cast<int>(random() % 5)) {
        elements.fill([&] { return static_cast<Element>(random()); });
    }
    PlaneRecord record() const {
        return {sizeof(Element) == 1 ? psC3U8 : psC3U16, elements.data(), elements.step(),
                elements.width() / 3, elements.height()};
    }
    int level(int x, int y, int c) const {
        const int element = elements.at(3 * x + c, y);
        return sizeof(Element) == 1 ? element : std::min(element >> 7, 255);
    }
};

GuardedPlane<std::uint8_t> display(int width, int height, int extraStep = 3, int misalign = 1) {
    GuardedPlane<std::uint8_t> target(4 * width, height, extraStep, misalign);
    target.fill([] { return kUntouched; });
    return target;
}

int32_t show(const PlaneRecord& image, GuardedPlane<std::uint8_t>& target, float scale) {
    return displayImage(&image, target.data(), target.step(), target.width() / 4, target.height(),
                        scale);
}

bool isUntouched(const GuardedPlane<std::uint8_t>& target) {
    for (int y = 0; y < target.height(); ++y) {
        for (int x = 0; x < target.width(); ++x) {
            if (target.at(x, y) != kUntouched) {
                return false;
            }
        }
    }
    return target.intact();
}

template <class Element>
void expectDirect(const Picture<Element>& picture, const GuardedPlane<std::uint8_t>& target) {
    EXPECT_TRUE(target.intact());
    const PlaneRecord image = picture.record();
    for (int y = 0; y < target.height(); ++y) {
        for (int x = 0; x < target.width() / 4; ++x) {
            const bool covered = x < image.width && y < image.height;
            for (int c = 0; c < 3; ++c) {
                ASSERT_EQ(target.at(4 * x + 2 - c, y),
                          covered ? picture.level(x, y, c) : kUntouched);
            }
            ASSERT_EQ(target.at(4 * x + 3, y), covered ? 255 : kUntouched);
        }
    }
}

template <class Element>
void expectTheOverlapIsCopied() {
    std::mt19937 random(1);
    const std::pair<int, int> sizes[] = {{1, 1}, {2, 3}, {3, 2}, {17, 5}, {67, 4}, {300, 9}};
    for (const auto& [width, height] : sizes) {
        const Picture<Element> picture(width, height, random);
        for (const auto& [targetWidth, targetHeight] : sizes) {
            test::forEachTarget([&] {
                auto target = display(targetWidth, targetHeight);
                ASSERT_EQ(show(picture.record(), target, 1.0f), 1);
                expectDirect(picture, target);
            });
        }
    }
}

TEST(DisplayImage, OverlapIsCopiedAndTheRestOfALargerTargetIsUnchanged) {
    expectTheOverlapIsCopied<std::uint8_t>();
    expectTheOverlapIsCopied<std::uint16_t>();
}

TEST(DisplayImage, ScalesNearOneAndNaNTakeTheDirectPath) {
    std::mt19937 random(2);
    const Picture<std::uint8_t> picture(20, 10, random);
    for (const float scale : {1.0f, 0.99f, 1.01f, NAN, -NAN}) {
        auto target = display(30, 15);
        ASSERT_EQ(show(picture.record(), target, scale), 1);
        expectDirect(picture, target);
    }
}

TEST(DisplayImage, ScalesOutsideTheBandAreResampled) {
    std::mt19937 random(3);
    const Picture<std::uint8_t> picture(20, 10, random);
    for (const float scale : {std::nextafter(0.99f, 0.0f), std::nextafter(1.01f, 2.0f)}) {
        auto target = display(30, 15);
        ASSERT_EQ(show(picture.record(), target, scale), 1);
        EXPECT_EQ(target.at(4 * 29, 14), 0);
        EXPECT_EQ(target.at(4 * 29 + 3, 14), 255);
    }
}

TEST(DisplayImage, SixteenBitLevelsAreTruncatedAndWhiteSaturates) {
    const std::uint16_t values[] = {0, 127, 128, 32640, 32767, 32768};
    const int shown[] = {0, 0, 1, 255, 255, 255};
    const PlaneRecord image{psC3U16, values, 12, 2, 1};
    auto target = display(2, 1);
    ASSERT_EQ(show(image, target, 1.0f), 1);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(target.at(i / 3 * 4 + 2 - i % 3, 0), shown[i]);
    }
}

TEST(DisplayImage, FourChannelFormatsAreReadAsThreeElementsPerPixelOnBothPaths) {
    std::mt19937 random(4);
    std::vector<std::uint8_t> bytes(8 * 40 * 20);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    for (const auto& [four, three] : {std::pair{psC4U8, psC3U8}, std::pair{psC4U16, psC3U16}}) {
        for (const float scale : {1.0f, 0.5f, 1.5f}) {
            auto asFour = display(50, 30);
            auto asThree = display(50, 30);
            ASSERT_EQ(show({four, bytes.data(), 8 * 40, 40, 20}, asFour, scale), 1);
            ASSERT_EQ(show({three, bytes.data(), 8 * 40, 40, 20}, asThree, scale), 1);
            EXPECT_TRUE(asFour.sameBits(asThree));
        }
    }
}

TEST(DisplayImage, FormatsWithoutThreeColoursAreRefusedAndNothingIsWritten) {
    const std::vector<std::uint16_t> pixels(64, 1);
    for (const int format : std::initializer_list<int>{0, 2, 4, psC1U8, psC1U16, 9, -1}) {
        for (const float scale : {1.0f, 2.0f}) {
            auto target = display(4, 4);
            EXPECT_EQ(show({format, pixels.data(), 16, 4, 4}, target, scale), -3);
            EXPECT_TRUE(isUntouched(target));
        }
    }
}

TEST(DisplayImage, NullPointersAreRefusedAndNothingIsWritten) {
    const std::vector<std::uint8_t> pixels(64, 1);
    const PlaneRecord image{psC3U8, pixels.data(), 12, 4, 4};
    const PlaneRecord without{psC3U8, nullptr, 12, 4, 4};
    auto target = display(4, 4);
    for (const float scale : {1.0f, 2.0f}) {
        EXPECT_EQ(displayImage(nullptr, target.data(), target.step(), 4, 4, scale), -3);
        EXPECT_EQ(show(without, target, scale), -3);
        EXPECT_EQ(displayImage(&image, nullptr, 16, 4, 4, scale), -3);
    }
    EXPECT_TRUE(isUntouched(target));
}

TEST(DisplayImage, ImageWithoutPixelsLeavesTheTargetUnchangedOnTheDirectPath) {
    const std::vector<std::uint8_t> pixels(64, 1);
    for (const auto& [width, height] : {std::pair{0, 4}, std::pair{4, 0}, std::pair{-1, 4}}) {
        for (const void* data :
             {static_cast<const void*>(pixels.data()), static_cast<const void*>(nullptr)}) {
            auto target = display(4, 4);
            EXPECT_EQ(show({psC3U8, data, 12, width, height}, target, 1.0f), 1);
            EXPECT_TRUE(isUntouched(target));
        }
    }
    auto target = display(4, 4);
    const PlaneRecord image{psC3U8, pixels.data(), 12, 4, 4};
    EXPECT_EQ(displayImage(&image, target.data(), target.step(), 0, 4, 1.0f), 1);
    EXPECT_EQ(displayImage(&image, target.data(), target.step(), 4, -1, 1.0f), 1);
    EXPECT_TRUE(isUntouched(target));
}

TEST(DisplayImage, ImageWithoutPixelsResamplesToBlack) {
    auto target = display(4, 4);
    ASSERT_EQ(show({psC3U8, nullptr, 12, 0, 4}, target, 2.0f), 1);
    EXPECT_TRUE(target.intact());
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 16; ++x) {
            EXPECT_EQ(target.at(x, y), x % 4 == 3 ? 255 : 0);
        }
    }
}

/// Expects the bilinear resampling of OpenCV to within one level, black where the scaled image does
/// not reach, and opaque pixels everywhere.
template <class Element>
void expectBilinear(const Picture<Element>& picture, float scale,
                    const GuardedPlane<std::uint8_t>& target) {
    const PlaneRecord image = picture.record();
    cv::Mat levels(image.height, image.width, CV_8UC3);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                levels.at<cv::Vec3b>(y, x)[c] =
                    static_cast<std::uint8_t>(picture.level(x, y, 2 - c));
            }
        }
    }
    cv::Mat resized;
    cv::resize(levels, resized, cv::Size(), static_cast<double>(scale), static_cast<double>(scale),
               cv::INTER_LINEAR);
    EXPECT_TRUE(target.intact());
    for (int y = 0; y < target.height(); ++y) {
        for (int x = 0; x < target.width() / 4; ++x) {
            for (int byte = 0; byte < 3; ++byte) {
                const bool reached = x < resized.cols && y < resized.rows;
                const int expected = reached ? resized.at<cv::Vec3b>(y, x)[byte] : 0;
                ASSERT_NEAR(target.at(4 * x + byte, y), expected, reached ? 1 : 0) << x << ' ' << y;
            }
            ASSERT_EQ(target.at(4 * x + 3, y), 255);
        }
    }
}

template <class Element>
void expectBilinearAtAllScales() {
    std::mt19937 random(5);
    // The products of size and scale are integers: OpenCV rounds fractions, the export truncates.
    for (const float scale : {0.125f, 0.25f, 0.5f, 0.75f, 1.25f, 1.5f, 2.0f, 3.0f}) {
        for (const auto& [width, height] : {std::pair{40, 24}, std::pair{8, 64}}) {
            const Picture<Element> picture(width, height, random);
            const int w = static_cast<int>(static_cast<float>(width) * scale);
            const int h = static_cast<int>(static_cast<float>(height) * scale);
            for (const auto& [targetW, targetH] :
                 {std::pair{w, h}, std::pair{w + 3, h + 2}, std::pair{w / 2 + 1, h / 2 + 1}}) {
                auto target = display(targetW, targetH);
                ASSERT_EQ(show(picture.record(), target, scale), 1);
                expectBilinear(picture, scale, target);
            }
        }
    }
}

TEST(DisplayImage, ResampledImageAgreesWithABilinearReferenceAndTheRestIsBlack) {
    expectBilinearAtAllScales<std::uint8_t>();
    expectBilinearAtAllScales<std::uint16_t>();
}

TEST(DisplayImage, ScalesNotAboveZeroGiveBlack) {
    std::mt19937 random(6);
    const Picture<std::uint16_t> picture(20, 10, random);
    for (const float scale : {0.0f, -0.0f, -1.0f, -INFINITY, 1e-30f}) {
        auto target = display(12, 7);
        ASSERT_EQ(show(picture.record(), target, scale), 1);
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 48; ++x) {
                EXPECT_EQ(target.at(x, y), x % 4 == 3 ? 255 : 0);
            }
        }
        EXPECT_TRUE(target.intact());
    }
}

TEST(DisplayImage, InfiniteScaleFillsTheTarget) {
    std::mt19937 random(7);
    const Picture<std::uint8_t> picture(3, 2, random);
    auto target = display(5, 5);
    ASSERT_EQ(show(picture.record(), target, INFINITY), 1);
    EXPECT_TRUE(target.intact());
    EXPECT_EQ(target.at(0, 0), picture.level(0, 0, 2));
}

TEST(DisplayImage, PlaneTooLargeToAllocateIsADisplayFailure) {
    constexpr int32_t kHuge = std::numeric_limits<int32_t>::max();
    const std::vector<std::uint8_t> pixels(64, 1);
    const PlaneRecord image{psC3U8, pixels.data(), 12, 4, 4};
    auto target = display(4, 4);
    EXPECT_EQ(displayImage(&image, target.data(), kHuge, kHuge, 1, 2.0f), -1001);
    EXPECT_EQ(show({psC3U8, pixels.data(), kHuge, kHuge, 1}, target, 2.0f), -1001);
    EXPECT_TRUE(isUntouched(target));
}

TEST(DisplayImage, PixelsAreTheSameForEveryNumberOfThreadsAndEveryProcessorVariant) {
    std::mt19937 random(8);
    const Picture<std::uint16_t> picture(61, 47, random);
    for (const float scale : {1.0f, 0.6f, 1.7f}) {
        auto expected = display(100, 80);
        ASSERT_EQ(show(picture.record(), expected, scale), 1);
        const auto expectSame = [&] {
            auto target = display(100, 80);
            ASSERT_EQ(show(picture.record(), target, scale), 1);
            EXPECT_TRUE(target.sameBits(expected));
        };
        test::forThreadCounts([&] { test::forEachTarget(expectSame); });
        const test::ThreadCount many(40);
        expectSame();
    }
}

} // namespace
