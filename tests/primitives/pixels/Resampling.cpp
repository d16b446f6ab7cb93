#include "velimproclib/primitives/pixels/Resampling.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::forEachTarget;
using test::GuardedPlane;
using Plane = GuardedPlane<std::uint8_t>;

Status resize(const Plane& src, const PixelRect& rect, Plane& dst, double xFactor, double yFactor) {
    return resizeU8(src.data(), src.width(), src.height(), src.step(), rect, dst.data(), dst.step(),
                    dst.width(), dst.height(), xFactor, yFactor, kLinear);
}

Status resize(const Plane& src, Plane& dst, double xFactor, double yFactor) {
    return resize(src, {0, 0, src.width(), src.height()}, dst, xFactor, yFactor);
}

struct Tap {
    int first;
    int second;
    std::int64_t weight;
};

Tap tapAt(int i, double factor, int length) {
    const double position = (i + 0.5) / factor - 0.5;
    const double inside = std::clamp(position, 0.0, length - 1.0);
    const int first = static_cast<int>(std::floor(inside));
    return {first, std::min(first + 1, length - 1), std::llround((inside - first) * 16384.0)};
}

int interpolated(const Plane& src, const PixelRect& rect, int x, int y, double xFactor,
                 double yFactor) {
    const Tap across = tapAt(x, xFactor, rect.w);
    const Tap down = tapAt(y, yFactor, rect.h);
    const auto alongRow = [&](int row) {
        const std::int64_t left = src.at(rect.x + across.first, rect.y + row);
        const std::int64_t right = src.at(rect.x + across.second, rect.y + row);
        return (left * (16384 - across.weight) + right * across.weight + 64) >> 7;
    };
    return static_cast<int>((alongRow(down.first) * (16384 - down.weight) +
                             alongRow(down.second) * down.weight + (1 << 20)) >>
                            21);
}

Plane noise(int w, int h, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> pixel(0, 255);
    Plane plane(w, h, static_cast<int>(seed % 5), static_cast<int>(seed % 3));
    plane.fill([&] { return pixel(random); });
    return plane;
}

constexpr int kUntouched = 77;

/// Resamples on every processor variant, into a target with `moreColumns` more columns (or fewer)
/// and two more rows than the result.
void expectDefinition(const Plane& src, const PixelRect& rect, double xFactor, double yFactor,
                      int moreColumns) {
    const int extentW = static_cast<int>(std::floor(src.width() * xFactor + 0.0000001));
    const int extentH = static_cast<int>(std::floor(src.height() * yFactor + 0.0000001));
    forEachTarget([&] {
        Plane dst(std::max(1, extentW + moreColumns), extentH + 2, 3, 1);
        dst.fill([] { return kUntouched; });
        ASSERT_EQ(kOk, resize(src, rect, dst, xFactor, yFactor));
        EXPECT_TRUE(dst.intact());
        for (int y = 0; y < dst.height(); ++y) {
            for (int x = 0; x < dst.width(); ++x) {
                const int expected = x < extentW && y < extentH
                                         ? interpolated(src, rect, x, y, xFactor, yFactor)
                                         : kUntouched;
                ASSERT_EQ(expected, dst.at(x, y))
                    << src.width() << " by " << src.height() << ", factors " << xFactor << ' '
                    << yFactor << ": " << x << ',' << y;
            }
        }
    });
}

TEST(Resampling, EqualsTheDefinitionOnEveryVariant) {
    std::mt19937 random(91);
    std::uniform_int_distribution<int> side(1, 67);
    std::uniform_real_distribution<double> factor(0.1, 4.0);
    for (unsigned i = 0; i < 24; ++i) {
        const int w = i == 0 ? 1 : i == 1 ? 900 : side(random);
        const int h = i == 0 ? 1 : i == 1 ? 5 : side(random);
        const double xFactor = i == 1 ? 2.5 : factor(random);
        expectDefinition(noise(w, h, i), {w / 3, h / 4, w - w / 3, h - h / 4}, xFactor,
                         factor(random), static_cast<int>(i % 3) - 1);
    }
}

TEST(Resampling, EqualsTheDefinitionForAllRowLengthsAroundAVectorAndManyFactors) {
    for (const int w : {1, 2, 3, 7, 8, 9, 15, 16, 17, 18, 31, 33, 64}) {
        for (const double factor : {0.07, 0.25, 0.4, 0.49, 0.5, 0.51, 0.54, 0.57, 0.6, 0.99, 1.0,
                                    1.01, 1.5, 2.0, 3.7, 8.0, 17.0}) {
            expectDefinition(noise(w, 3, static_cast<unsigned>(w)), {0, 0, w, 3}, factor, 1.3, 0);
        }
    }
}

TEST(Resampling, ReadsNothingBeyondTheSource) {
    for (int w = 1; w <= 40; ++w) {
        const Plane src = noise(w, 2, static_cast<unsigned>(w));
        // A block of exactly this size: the address sanitizer reports reads beyond it.
        std::vector<std::uint8_t> pixels;
        for (int i = 0; i < 2 * w; ++i) {
            pixels.push_back(src.at(i % w, i / w));
        }
        for (const double factor : {0.2, 0.5, 0.6, 1.0, 1.7, 9.0}) {
            const int length = static_cast<int>(std::floor(w * factor + 0.0000001));
            Plane dst(std::max(1, length), 2);
            ASSERT_EQ(kOk, resizeU8(pixels.data(), w, 2, w, {0, 0, w, 2}, dst.data(), dst.step(),
                                    dst.width(), 2, factor, 1.0, kLinear));
            for (int x = 0; x < length; ++x) {
                ASSERT_EQ(interpolated(src, {0, 0, w, 2}, x, 1, factor, 1.0), dst.at(x, 1));
            }
        }
    }
}

TEST(Resampling, HalfTheSizeIsTheMeanOfFourPixels) {
    for (const int w : {2, 3, 16, 67, 2101}) {
        for (const int h : {2, 3, 9}) {
            const Plane src = noise(w, h, static_cast<unsigned>(w + h));
            for (const int moreColumns : {-1, 0, 1}) {
                expectDefinition(src, {0, 0, w, h}, 0.5, 0.5, moreColumns);
            }
            expectDefinition(src, {1, 0, w - 1, h}, 0.5, 0.5, 0);
            expectDefinition(src, {0, 1, w, h - 1}, 0.5, 0.5, 0);
            expectDefinition(src, {0, 0, w, h}, 0.5, 1.0, 0);
            expectDefinition(src, {0, 0, w, h}, 1.0, 0.5, 0);
        }
    }
    struct Mean {
        std::uint8_t pixels[4];
        int level;
    };
    for (const Mean& mean : {Mean{{0, 0, 0, 1}, 0}, Mean{{0, 1, 0, 1}, 1}, Mean{{1, 1, 0, 1}, 1},
                             Mean{{255, 254, 254, 254}, 254}, Mean{{254, 255, 254, 255}, 255}}) {
        Plane four(2, 2);
        four.fill([next = mean.pixels]() mutable { return *next++; });
        Plane one(1, 1);
        ASSERT_EQ(kOk, resize(four, one, 0.5, 0.5));
        EXPECT_EQ(one.at(0, 0), mean.level);
    }
}

TEST(Resampling, WeightThatRoundsToOneTakesThePixelAlone) {
    // Every position is less than half a weight before a pixel.
    const double factor = 1.0 + 1e-7;
    const Plane src = noise(40, 40, 4);
    expectDefinition(src, {0, 0, 40, 40}, factor, factor, 0);
    Plane dst(40, 40);
    ASSERT_EQ(kOk, resize(src, dst, factor, factor));
    EXPECT_TRUE(dst.sameBits(src));
}

TEST(Resampling, AgreesWithBilinearResizeOfOpenCVWithinOneLevel) {
    for (const double factor : {0.25, 0.37, 0.5, 0.75, 1.02, 1.5, 2.0, 3.3}) {
        const Plane src = noise(83, 61, 3);
        const int w = static_cast<int>(std::floor(83 * factor + 0.0000001));
        const int h = static_cast<int>(std::floor(61 * factor + 0.0000001));
        Plane dst(w, h);
        ASSERT_EQ(kOk, resize(src, dst, factor, factor));
        const cv::Mat source(61, 83, CV_8UC1, const_cast<std::uint8_t*>(src.data()),
                             static_cast<std::size_t>(src.step()));
        cv::Mat reference;
        cv::resize(source, reference, cv::Size(), factor, factor, cv::INTER_LINEAR);
        for (int y = 0; y < std::min(h, reference.rows); ++y) {
            for (int x = 0; x < std::min(w, reference.cols); ++x) {
                ASSERT_LE(std::abs(reference.at<std::uint8_t>(y, x) - dst.at(x, y)), 1)
                    << factor << ": " << x << ',' << y;
            }
        }
    }
}

TEST(Resampling, FactorOfOneCopies) {
    const Plane src = noise(67, 13, 5);
    Plane dst(67, 13);
    ASSERT_EQ(kOk, resize(src, dst, 1.0, 1.0));
    EXPECT_TRUE(dst.sameBits(src));
}

TEST(Resampling, FlatPlanesStayFlat) {
    Plane src(9, 7);
    for (const int level : {0, 1, 128, 255}) {
        src.fill([&] { return level; });
        Plane dst(23, 18);
        ASSERT_EQ(kOk, resize(src, dst, 2.6, 2.6));
        for (int y = 0; y < 18; ++y) {
            for (int x = 0; x < 23; ++x) {
                ASSERT_EQ(level, dst.at(x, y));
            }
        }
    }
}

TEST(Resampling, LengthBelowAWholeNumberByRoundingCountsAsWhole) {
    const Plane src = noise(10, 10, 6);
    Plane dst(8, 8);
    dst.fill([] { return 77; });
    const double justBelow = std::nextafter(0.7, 0.0);
    ASSERT_EQ(kOk, resize(src, dst, justBelow, justBelow));
    EXPECT_EQ(interpolated(src, {0, 0, 10, 10}, 6, 6, justBelow, justBelow), dst.at(6, 6));
    EXPECT_EQ(77, dst.at(7, 6));
    EXPECT_EQ(77, dst.at(6, 7));
}

TEST(Resampling, HugeFactorsFillTheTargetFromTheFirstPixel) {
    const Plane src = noise(10, 10, 7);
    for (const double factor : {1e12, 1e300, std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::infinity()}) {
        Plane dst(5, 5);
        ASSERT_EQ(kOk, resize(src, dst, factor, factor));
        EXPECT_TRUE(dst.intact());
        EXPECT_EQ(src.at(0, 0), dst.at(0, 0));
        EXPECT_EQ(src.at(0, 0), dst.at(4, 4));
    }
}

TEST(Resampling, TinyFactorsGiveNoPixelAndNoError) {
    const Plane src = noise(10, 10, 8);
    for (const double factor : {0.05, 1e-300, std::numeric_limits<double>::denorm_min()}) {
        Plane dst(5, 5);
        dst.fill([] { return 77; });
        EXPECT_EQ(kOk, resize(src, dst, factor, factor));
        EXPECT_EQ(77, dst.at(0, 0));
    }
}

TEST(Resampling, RectangleIsClippedToTheImage) {
    const Plane src = noise(10, 10, 9);
    Plane whole(10, 10);
    Plane cut(10, 10);
    ASSERT_EQ(kOk, resize(src, whole, 1.0, 1.0));
    ASSERT_EQ(kOk, resize(src, {-5, -3, std::numeric_limits<int>::max(), 100}, cut, 1.0, 1.0));
    EXPECT_TRUE(whole.sameBits(cut));
    EXPECT_EQ(kBadSize, resize(src, {10, 0, 5, 5}, cut, 1.0, 1.0));
    EXPECT_EQ(kBadSize, resize(src, {std::numeric_limits<int>::max(), 0, 5, 5}, cut, 1.0, 1.0));
}

TEST(Resampling, ChecksPointersThenSizesThenStepsAndWritesNothing) {
    test::expectChecksInOrder({"resizeU8", 2, 4, 2, [](const test::CheckedArguments& g) {
                                   return resizeU8(g.at<std::uint8_t>(0), g.sizes[0], g.sizes[1],
                                                   g.steps[0], {0, 0, 2, 2}, g.at<std::uint8_t>(1),
                                                   g.steps[1], g.sizes[2], g.sizes[3], 1.0, 1.0,
                                                   kLinear);
                               }});
}

TEST(Resampling, EmptyRectanglesAndFactorsNotAboveZeroAreBadSizesAndOtherCodesBadMasks) {
    const Plane src = noise(4, 4, 10);
    Plane dst(4, 4);
    dst.fill([] { return 77; });
    const Plane before = dst;
    const PixelRect all{0, 0, 4, 4};
    const auto call = [&](const PixelRect& rect, int srcStep, double factor, int interpolation) {
        return resizeU8(src.data(), 4, 4, srcStep, rect, dst.data(), dst.step(), 4, 4, factor, 1.0,
                        interpolation);
    };
    EXPECT_EQ(kBadSize, call({0, 0, 0, 4}, 0, 1.0, kLinear));
    EXPECT_EQ(kBadSize, call({0, 0, 4, -4}, 0, 1.0, kLinear));
    for (const double factor : {0.0, -0.0, -1.0, -std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(kBadSize, call(all, 0, factor, kLinear));
        EXPECT_EQ(kBadSize, resize(src, dst, 1.0, factor));
    }
    EXPECT_EQ(kBadStep, call(all, 0, 1.0, 1));
    for (const int interpolation : {-1, 0, 1, 3}) {
        EXPECT_EQ(kBadMask, call(all, src.step(), 1.0, interpolation));
    }
    EXPECT_TRUE(dst.sameBits(before));
}

} // namespace
