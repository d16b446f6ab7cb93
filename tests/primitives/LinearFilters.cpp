#include "velimproclib/primitives/LinearFilters.h"

#include "tests/support/BorderedPlane.h"
#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace vel {
namespace {

using test::BorderedPlane;
using test::forEachTarget;
using test::GuardedPlane;

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

struct Shape {
    int w;
    int h;
};

std::vector<Shape> shapes(std::mt19937& random) {
    std::vector<Shape> all{{1, 1}, {2, 3}, {3, 2}, {517, 5}};
    std::uniform_int_distribution<int> side(1, 67);
    for (int i = 0; i < 20; ++i) {
        all.push_back({side(random), side(random)});
    }
    return all;
}

TEST(LinearFilters, FloatFiltersEqualTheDefinitionBitForBitOnEveryVariant) {
    std::mt19937 random(31);
    std::uniform_real_distribution<float> value(-2.0f, 2.0f);
    for (const Shape& shape : shapes(random)) {
        const int len = std::uniform_int_distribution<int>(1, shape.w % 4 == 0 ? 23 : 9)(random);
        const int anchor = std::uniform_int_distribution<int>(0, len - 1)(random);
        std::vector<float> kernel(static_cast<std::size_t>(len));
        std::generate(kernel.begin(), kernel.end(), [&] { return value(random); });
        BorderedPlane<float> src(shape.w, shape.h, kBorder, len % 7, len % 5);
        src.fill([&] { return value(random); });
        forEachTarget([&] {
            GuardedPlane<float> rows(shape.w, shape.h, 3, 1);
            GuardedPlane<float> columns(shape.w, shape.h, 8, 4);
            ASSERT_EQ(kOk, filterRowF32(src.data(), src.step(), rows.data(), rows.step(), shape.w,
                                        shape.h, kernel.data(), len, anchor));
            ASSERT_EQ(kOk, filterColumnF32(src.data(), src.step(), columns.data(), columns.step(),
                                           shape.w, shape.h, kernel.data(), len, anchor));
            EXPECT_TRUE(rows.intact() && columns.intact() && src.intact());
            for (int y = 0; y < shape.h; ++y) {
                for (int x = 0; x < shape.w; ++x) {
                    ASSERT_EQ(convolved(src, x, y, 1, 0, kernel, anchor), rows.at(x, y))
                        << x << ',' << y;
                    ASSERT_EQ(convolved(src, x, y, 0, 1, kernel, anchor), columns.at(x, y))
                        << x << ',' << y;
                }
            }
        });
    }
}

TEST(LinearFilters, TheKernelIsTurnedRoundAndItsAnchorTapMeetsThePixel) {
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

TEST(LinearFilters, FloatSumsAreCarriedInDouble) {
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

TEST(LinearFilters, NotANumberSpreadsOverTheKernelOnly) {
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
    for (const Shape& shape : shapes(random)) {
        const int len = std::uniform_int_distribution<int>(1, shape.w % 4 == 0 ? 23 : 9)(random);
        const int anchor = std::uniform_int_distribution<int>(0, len - 1)(random);
        const int span = shape.w % 3 == 0 ? std::numeric_limits<int>::max() : 4096;
        std::uniform_int_distribution<int> tap(-span / 8, span);
        std::vector<std::int32_t> kernel(static_cast<std::size_t>(len));
        std::generate(kernel.begin(), kernel.end(), [&] { return tap(random); });
        const std::int64_t sum = span / 2 * (shape.h % 4 + std::int64_t{1});
        const int magnitude =
            static_cast<int>(std::min<std::int64_t>(sum, std::numeric_limits<std::int32_t>::max()));
        const int divisor = shape.h % 5 == 0 ? -magnitude : magnitude;
        BorderedPlane<std::uint8_t> src(shape.w, shape.h, kBorder, len % 7, len % 5);
        src.fill([&] { return pixel(random); });
        forEachTarget([&] {
            GuardedPlane<std::uint8_t> rows(shape.w, shape.h, 3, 1);
            GuardedPlane<std::uint8_t> columns(shape.w, shape.h, 8, 4);
            ASSERT_EQ(kOk, filterRowU8(src.data(), src.step(), rows.data(), rows.step(), shape.w,
                                       shape.h, kernel.data(), len, anchor, divisor));
            ASSERT_EQ(kOk, filterColumnU8(src.data(), src.step(), columns.data(), columns.step(),
                                          shape.w, shape.h, kernel.data(), len, anchor, divisor));
            EXPECT_TRUE(rows.intact() && columns.intact() && src.intact());
            for (int y = 0; y < shape.h; ++y) {
                for (int x = 0; x < shape.w; ++x) {
                    ASSERT_EQ(convolved(src, x, y, 1, 0, kernel, anchor, divisor), rows.at(x, y));
                    ASSERT_EQ(convolved(src, x, y, 0, 1, kernel, anchor, divisor),
                              columns.at(x, y));
                }
            }
        });
    }
}

TEST(LinearFilters, ByteFiltersRoundHalvesUpForEverySumAndDivisor) {
    // A kernel of one tap makes every multiple of the pixel; all pixels and many divisors pass.
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

TEST(LinearFilters, RefusalsComeInOrderAndWriteNothing) {
    BorderedPlane<float> src(4, 4, kBorder);
    src.fill([] { return 1.0f; });
    GuardedPlane<float> dst(4, 4);
    dst.fill([] { return 7.0f; });
    const float kernel[7] = {};
    const auto row = [&](const float* s, int srcStep, int w, int h, const float* k, int len) {
        return filterRowF32(s, srcStep, dst.data(), dst.step(), w, h, k, len, len / 2);
    };
    EXPECT_EQ(kNullPointer, row(nullptr, 0, 0, 4, kernel, 7));
    EXPECT_EQ(kNullPointer, row(src.data(), 0, 0, 4, nullptr, 7));
    EXPECT_EQ(kBadSize, row(src.data(), 0, 0, 4, kernel, 7));
    EXPECT_EQ(kBadSize, row(src.data(), 0, 4, -2, kernel, 7));
    EXPECT_EQ(kBadSize, row(src.data(), 0, 4, 4, kernel, 0));
    EXPECT_EQ(kBadStep, row(src.data(), 0, 4, 4, kernel, 7));
    EXPECT_EQ(kBadBorderStep, row(src.data(), 4 * 10 - 1, 4, 4, kernel, 7));
    EXPECT_EQ(kBadStep, filterRowF32(src.data(), 1, dst.data(), 0, 4, 4, kernel, 7, 3));
    EXPECT_EQ(kBadStep, filterColumnF32(src.data(), 15, dst.data(), 16, 4, 4, kernel, 7, 3));
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(7.0f, dst.at(x, y));
        }
    }
    BorderedPlane<std::uint8_t> bytes(4, 4, kBorder);
    GuardedPlane<std::uint8_t> byteDst(4, 4);
    const std::int32_t taps[3] = {1, 2, 1};
    EXPECT_EQ(kDivisorZero,
              filterRowU8(bytes.data(), bytes.step(), byteDst.data(), 4, 4, 4, taps, 3, 1, 0));
    EXPECT_EQ(kDivisorZero,
              filterColumnU8(bytes.data(), bytes.step(), byteDst.data(), 4, 4, 4, taps, 3, 1, 0));
    EXPECT_EQ(kBadBorderStep, filterRowU8(bytes.data(), 5, byteDst.data(), 4, 4, 4, taps, 3, 1, 0));
    EXPECT_EQ(kBadStep, filterColumnU8(bytes.data(), 3, byteDst.data(), 4, 4, 4, taps, 3, 1, 0));
    EXPECT_EQ(kNullPointer, filterColumnU8(bytes.data(), 5, nullptr, 4, 4, 4, taps, 3, 1, 0));
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
} // namespace vel
