#include "velimproclib/primitives/filters/LinearFilters.h"

#include "tests/support/BorderedPlane.h"
#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::BorderedPlane;
using test::forEachTarget;
using test::GuardedPlane;
using test::PlaneShape;

constexpr int kBorder = 24;

// The definition, one pixel at a time. (dx, dy) is the direction of the filter.
float convolved(const BorderedPlane<float>& src, int x, int y, int dx, int dy,
                const std::vector<float>& kernel, int anchor) {
    const int len = static_cast<int>(kernel.size());
    double sum = 0;
    for (int k = 0; k < len; ++k) {
        const int away = k - (len - 1 - anchor);
        sum += static_cast<double>(kernel[static_cast<std::size_t>(len - 1 - k)]) *
               static_cast<double>(src.at(x + away * dx, y + away * dy));
    }
    return static_cast<float>(sum);
}

std::uint8_t convolved(const BorderedPlane<std::uint8_t>& src, int x, int y, int dx, int dy,
                       const std::vector<std::int32_t>& kernel, int anchor, int divisor) {
    const int len = static_cast<int>(kernel.size());
    std::int64_t sum = 0;
    for (int k = 0; k < len; ++k) {
        const int away = k - (len - 1 - anchor);
        sum += static_cast<std::int64_t>(kernel[static_cast<std::size_t>(len - 1 - k)]) *
               src.at(x + away * dx, y + away * dy);
    }
    std::int64_t twice = 2 * sum + divisor;
    std::int64_t by = 2 * static_cast<std::int64_t>(divisor);
    if (by < 0) {
        twice = -twice;
        by = -by;
    }
    const std::int64_t quotient = twice < 0 ? 0 : twice / by;
    return static_cast<std::uint8_t>(quotient > 255 ? 255 : static_cast<int>(quotient));
}

TEST(LinearFilters, FloatFiltersEqualTheDefinitionBitForBitOnEveryVariant) {
    std::mt19937 random(31);
    std::uniform_real_distribution<float> value(-2.0f, 2.0f);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        const int len =
            std::uniform_int_distribution<int>(1, shape.width % 4 == 0 ? 23 : 9)(random);
        const int anchor = std::uniform_int_distribution<int>(0, len - 1)(random);
        std::vector<float> kernel(static_cast<std::size_t>(len));
        std::generate(kernel.begin(), kernel.end(), [&] { return value(random); });
        BorderedPlane<float> src(shape.width, shape.height, kBorder, shape.extraStep,
                                 shape.misalign);
        src.fill([&] { return value(random); });
        forEachTarget([&] {
            GuardedPlane<float> rows(shape.width, shape.height, 3, 1);
            GuardedPlane<float> columns(shape.width, shape.height, 8, 4);
            ASSERT_EQ(kOk, filterRowF32(src.data(), src.step(), rows.data(), rows.step(),
                                        shape.width, shape.height, kernel.data(), len, anchor));
            ASSERT_EQ(kOk, filterColumnF32(src.data(), src.step(), columns.data(), columns.step(),
                                           shape.width, shape.height, kernel.data(), len, anchor));
            EXPECT_TRUE(rows.intact() && columns.intact() && src.intact());
            for (int y = 0; y < shape.height; ++y) {
                for (int x = 0; x < shape.width; ++x) {
                    ASSERT_EQ(convolved(src, x, y, 1, 0, kernel, anchor), rows.at(x, y))
                        << x << ',' << y;
                    ASSERT_EQ(convolved(src, x, y, 0, 1, kernel, anchor), columns.at(x, y))
                        << x << ',' << y;
                }
            }
        });
    }
}

TEST(LinearFilters, KernelIsFlippedAndItsAnchorTapMultipliesThePixel) {
    BorderedPlane<float> src(5, 5, kBorder);
    src.fill([] { return 0.0f; });
    src.set(2, 2, 1.0f);
    const float kernel[] = {1.0f, 2.0f, 3.0f};
    GuardedPlane<float> dst(5, 5);
    filterRowF32(src.data(), src.step(), dst.data(), dst.step(), 5, 5, kernel, 3, 1);
    EXPECT_EQ(1.0f, dst.at(1, 2));
    EXPECT_EQ(2.0f, dst.at(2, 2));
    EXPECT_EQ(3.0f, dst.at(3, 2));
    filterColumnF32(src.data(), src.step(), dst.data(), dst.step(), 5, 5, kernel, 3, 0);
    EXPECT_EQ(1.0f, dst.at(2, 2));
    EXPECT_EQ(2.0f, dst.at(2, 3));
    EXPECT_EQ(3.0f, dst.at(2, 4));
}

TEST(LinearFilters, FloatSumsAreAccumulatedInDouble) {
    BorderedPlane<float> src(1, 1, kBorder);
    src.fill([] { return 1.0f; });
    const float kernel[] = {1e8f, 1.0f, -1e8f};
    GuardedPlane<float> dst(1, 1);
    filterRowF32(src.data(), src.step(), dst.data(), dst.step(), 1, 1, kernel, 3, 1);
    EXPECT_EQ(1.0f, dst.at(0, 0));
}

TEST(LinearFilters, SumsBeyondTheRangeOfFloatsAreInfiniteOnEveryVariant) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float kernel[] = {2.0f};
    for (const int w : {3, 64}) {
        for (const float value : {3e38f, -3e38f}) {
            BorderedPlane<float> src(w, 2, 1);
            src.fill([&] { return value; });
            forEachTarget([&] {
                GuardedPlane<float> rows(w, 2);
                GuardedPlane<float> columns(w, 2);
                ASSERT_EQ(kOk, filterRowF32(src.data(), src.step(), rows.data(), rows.step(), w, 2,
                                            kernel, 1, 0));
                ASSERT_EQ(kOk, filterColumnF32(src.data(), src.step(), columns.data(),
                                               columns.step(), w, 2, kernel, 1, 0));
                for (int x = 0; x < w; ++x) {
                    EXPECT_EQ(value > 0 ? kInfinity : -kInfinity, rows.at(x, 1));
                    EXPECT_EQ(value > 0 ? kInfinity : -kInfinity, columns.at(x, 1));
                }
            });
        }
    }
}

TEST(LinearFilters, NaNSpreadsOverTheKernelOnly) {
    BorderedPlane<float> src(40, 3, kBorder);
    src.fill([] { return 1.0f; });
    src.set(20, 1, std::numeric_limits<float>::quiet_NaN());
    const float kernel[] = {0.25f, 0.5f, 0.25f};
    forEachTarget([&] {
        GuardedPlane<float> dst(40, 3);
        filterRowF32(src.data(), src.step(), dst.data(), dst.step(), 40, 3, kernel, 3, 1);
        for (int x = 0; x < 40; ++x) {
            EXPECT_EQ(x >= 19 && x <= 21, std::isnan(dst.at(x, 1))) << x;
        }
    });
}

TEST(LinearFilters, ByteFiltersEqualTheDefinitionOnEveryVariant) {
    std::mt19937 random(32);
    std::uniform_int_distribution<int> pixel(0, 255);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        const int len =
            std::uniform_int_distribution<int>(1, shape.width % 4 == 0 ? 23 : 9)(random);
        const int anchor = std::uniform_int_distribution<int>(0, len - 1)(random);
        const int span = shape.width % 3 == 0 ? std::numeric_limits<int>::max() : 4096;
        std::uniform_int_distribution<int> tap(-span / 8, span);
        std::vector<std::int32_t> kernel(static_cast<std::size_t>(len));
        std::generate(kernel.begin(), kernel.end(), [&] { return tap(random); });
        const std::int64_t sum = span / 2 * (shape.height % 4 + std::int64_t{1});
        const int magnitude =
            static_cast<int>(std::min<std::int64_t>(sum, std::numeric_limits<std::int32_t>::max()));
        const int divisor = shape.height % 5 == 0 ? -magnitude : magnitude;
        BorderedPlane<std::uint8_t> src(shape.width, shape.height, kBorder, shape.extraStep,
                                        shape.misalign);
        src.fill([&] { return pixel(random); });
        forEachTarget([&] {
            GuardedPlane<std::uint8_t> rows(shape.width, shape.height, 3, 1);
            GuardedPlane<std::uint8_t> columns(shape.width, shape.height, 8, 4);
            ASSERT_EQ(kOk,
                      filterRowU8(src.data(), src.step(), rows.data(), rows.step(), shape.width,
                                  shape.height, kernel.data(), len, anchor, divisor));
            ASSERT_EQ(kOk, filterColumnU8(src.data(), src.step(), columns.data(), columns.step(),
                                          shape.width, shape.height, kernel.data(), len, anchor,
                                          divisor));
            EXPECT_TRUE(rows.intact() && columns.intact() && src.intact());
            for (int y = 0; y < shape.height; ++y) {
                for (int x = 0; x < shape.width; ++x) {
                    ASSERT_EQ(convolved(src, x, y, 1, 0, kernel, anchor, divisor), rows.at(x, y));
                    ASSERT_EQ(convolved(src, x, y, 0, 1, kernel, anchor, divisor),
                              columns.at(x, y));
                }
            }
        });
    }
}

TEST(LinearFilters, ByteFiltersRoundHalvesUpForEverySumAndDivisor) {
    // A kernel of one tap gives multiples of the pixel: all pixels, with many divisors.
    BorderedPlane<std::uint8_t> src(256, 1, 1);
    for (int x = 0; x < 256; ++x) {
        src.set(x, 0, static_cast<std::uint8_t>(x));
    }
    forEachTarget([&] {
        for (const int tap : {1, 3, 1000, -1, 8421504}) {
            const std::vector<std::int32_t> kernel{tap};
            for (const int divisor :
                 {1, 2, 3, 4, 6, 7, 10, 255, 256, 4096, 1999999, 2147483647, -2}) {
                GuardedPlane<std::uint8_t> dst(256, 1);
                filterRowU8(src.data(), src.step(), dst.data(), dst.step(), 256, 1, kernel.data(),
                            1, 0, divisor);
                for (int x = 0; x < 256; ++x) {
                    ASSERT_EQ(convolved(src, x, 0, 1, 0, kernel, 0, divisor), dst.at(x, 0))
                        << x << '*' << tap << '/' << divisor;
                }
            }
        }
    });
}

TEST(LinearFilters, EveryFilterChecksPointersThenSizesThenStepsAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    for (const auto filter : {filterRowF32, filterColumnF32}) {
        test::expectChecksInOrder({"of floats", 3, 3, 2, [filter](const Arguments& g) {
                                       return filter(g.inside<float>(0), g.steps[0], g.at<float>(1),
                                                     g.steps[1], g.sizes[0], g.sizes[1],
                                                     g.at<float>(2), g.sizes[2], 1);
                                   }});
    }
    for (const auto filter : {filterRowU8, filterColumnU8}) {
        test::expectChecksInOrder({"of bytes", 3, 3, 2, [filter](const Arguments& g) {
                                       return filter(g.inside<std::uint8_t>(0), g.steps[0],
                                                     g.at<std::uint8_t>(1), g.steps[1], g.sizes[0],
                                                     g.sizes[1], g.at<std::int32_t>(2), g.sizes[2],
                                                     1, 16);
                                   }});
    }
}

TEST(LinearFilters, StepsShorterThanARowAndADivisorOfZeroAreRefusedInThisOrder) {
    BorderedPlane<float> src(4, 4, kBorder);
    src.fill([] { return 1.0f; });
    GuardedPlane<float> dst(4, 4);
    dst.fill([] { return 7.0f; });
    const GuardedPlane<float> before = dst;
    const float kernel[7] = {};
    const auto refusal = [&](auto filter, int srcStep) {
        return filter(src.data(), srcStep, dst.data(), dst.step(), 4, 4, kernel, 7, 3);
    };
    EXPECT_EQ(kBadBorderStep, refusal(filterRowF32, 4 * 10 - 1));
    EXPECT_EQ(kBadStep, refusal(filterColumnF32, 4 * 4 - 1));
    EXPECT_TRUE(dst.sameBits(before));

    BorderedPlane<std::uint8_t> bytes(4, 4, kBorder);
    GuardedPlane<std::uint8_t> byteDst(4, 4);
    byteDst.fill([] { return 7; });
    const GuardedPlane<std::uint8_t> bytesBefore = byteDst;
    const std::int32_t taps[3] = {1, 2, 1};
    const auto byteRefusal = [&](auto filter, int srcStep) {
        return filter(bytes.data(), srcStep, byteDst.data(), 4, 4, 4, taps, 3, 1, 0);
    };
    EXPECT_EQ(kBadBorderStep, byteRefusal(filterRowU8, 5));
    EXPECT_EQ(kBadStep, byteRefusal(filterColumnU8, 3));
    EXPECT_EQ(kDivisorZero, byteRefusal(filterRowU8, bytes.step()));
    EXPECT_EQ(kDivisorZero, byteRefusal(filterColumnU8, bytes.step()));
    EXPECT_TRUE(byteDst.sameBits(bytesBefore));
}

TEST(LinearFilters, ColumnsNeedNoBorderAtTheSides) {
    BorderedPlane<float> src(4, 1, 1);
    src.fill([] { return 2.0f; });
    GuardedPlane<float> dst(4, 1);
    const float kernel[] = {0.5f, 1.0f, 0.5f};
    EXPECT_EQ(kOk,
              filterColumnF32(src.data(), src.step(), dst.data(), dst.step(), 4, 1, kernel, 3, 1));
    EXPECT_EQ(4.0f, dst.at(3, 0));
}

} // namespace
