#include "velimproclib/primitives/arithmetic/Vectors.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/FloatComparison.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::GuardedPlane;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr double kInfinityF64 = std::numeric_limits<double>::infinity();
constexpr double kNanF64 = std::numeric_limits<double>::quiet_NaN();
constexpr float kLargest = std::numeric_limits<float>::max();

template <class T>
T randomValue(std::mt19937& random) {
    if (random() % 3 == 0) {
        return test::randomPixel<float>(random);
    }
    return std::uniform_real_distribution<T>(T(-5), T(5))(random);
}

struct Length {
    int count;
    int misalign;
};

std::vector<Length> lengths(std::mt19937& random) {
    std::vector<Length> all{{1031, 0}, {4096, 3}};
    for (int count = 1; count <= 67; ++count) {
        all.push_back({count, static_cast<int>(random() % 16)});
    }
    return all;
}

template <class T>
GuardedPlane<T> randomVector(const Length& length, std::mt19937& random) {
    GuardedPlane<T> vector(length.count, 1, 0, length.misalign);
    vector.fill([&] { return randomValue<T>(random); });
    return vector;
}

/// `routine(a, b, dst, count)` against `reference(a, b)`, into a vector of its own and into `b`.
template <class From, class To, class Routine, class Reference>
void expectElementwise(Routine routine, Reference reference) {
    std::mt19937 random(1);
    for (const Length& length : lengths(random)) {
        const auto a = randomVector<From>(length, random);
        const auto b = randomVector<To>(length, random);
        test::forEachTarget([&] {
            GuardedPlane<To> apart(length.count, 1, 0, length.misalign / 2);
            apart.fill([] { return To(0); });
            routine(a.data(), b.data(), apart.data(), length.count);
            auto intoB = b;
            routine(a.data(), intoB.data(), intoB.data(), length.count);
            for (int x = 0; x < length.count; ++x) {
                const To expected = reference(a.at(x, 0), b.at(x, 0));
                EXPECT_TRUE(test::sameFloat(apart.at(x, 0), expected))
                    << x << " of " << length.count << ": " << apart.at(x, 0) << ", not "
                    << expected;
                EXPECT_TRUE(test::sameFloat(intoB.at(x, 0), expected));
            }
            EXPECT_TRUE(apart.intact());
            EXPECT_TRUE(intoB.intact());
        });
    }
}

TEST(Vectors, SumsAndDifferencesOfFloatsAreOneOperationPerElementOnEveryTarget) {
    expectElementwise<float, float>(
        [](auto* a, auto* b, auto* y, int n) { EXPECT_EQ(vsAdd(n, a, b, y), kOk); },
        [](float a, float b) { return a + b; });
    expectElementwise<float, float>(
        [](auto* a, auto* b, auto* y, int n) { EXPECT_EQ(vsSub(n, a, b, y), kOk); },
        [](float a, float b) { return a - b; });
}

TEST(Vectors, MagnitudesClearTheSignOnlyOnEveryTarget) {
    expectElementwise<float, float>(
        [](auto* a, auto*, auto* y, int n) { EXPECT_EQ(vsAbs(n, a, y), kOk); },
        [](float a, float) { return std::fabs(a); });
    float minusNan = -kNan;
    EXPECT_EQ(vsAbs(1, &minusNan, &minusNan), kOk);
    EXPECT_TRUE(std::isnan(minusNan) && !std::signbit(minusNan));
}

TEST(Vectors, WideningIsExactOnEveryTarget) {
    expectElementwise<float, double>(
        [](auto* a, auto*, auto* dst, int n) { EXPECT_EQ(vecF32toF64(a, dst, n), kOk); },
        [](float a, double) { return static_cast<double>(a); });
}

float saturated(double v) {
    if (v > static_cast<double>(kLargest)) {
        return kLargest;
    }
    return v < -static_cast<double>(kLargest) ? -kLargest : static_cast<float>(v);
}

TEST(Vectors, NarrowingRoundsAndSaturatesOnEveryTarget) {
    std::mt19937 random(5);
    for (const Length& length : lengths(random)) {
        GuardedPlane<double> src(length.count, 1, 0, length.misalign);
        src.fill([&] {
            const auto mantissa = std::uniform_real_distribution<double>(-1.0, 1.0)(random);
            return std::ldexp(mantissa, static_cast<int>(random() % 320) - 160);
        });
        test::forEachTarget([&] {
            GuardedPlane<float> dst(length.count, 1, 0, length.misalign / 3);
            EXPECT_EQ(vecF64toF32(src.data(), dst.data(), length.count), kOk);
            for (int x = 0; x < length.count; ++x) {
                EXPECT_TRUE(test::sameFloat(dst.at(x, 0), saturated(src.at(x, 0))));
            }
            EXPECT_TRUE(dst.intact());
        });
    }
}

TEST(Vectors, NarrowingEndsAtTheLargestFiniteFloatOfBothSigns) {
    const double largest = kLargest;
    const std::vector<double> src{1e39,
                                  -1e39,
                                  kInfinityF64,
                                  -kInfinityF64,
                                  largest,
                                  largest * 1.1,
                                  -largest,
                                  kNanF64,
                                  1e-60,
                                  -0.0,
                                  std::nextafter(largest, kInfinityF64)};
    const std::vector<float> expected{kLargest,  -kLargest, kLargest, -kLargest, kLargest, kLargest,
                                      -kLargest, kNan,      0.0f,     -0.0f,     kLargest};
    test::forEachTarget([&] {
        std::vector<float> dst(src.size());
        EXPECT_EQ(vecF64toF32(src.data(), dst.data(), static_cast<int>(src.size())), kOk);
        for (std::size_t i = 0; i < src.size(); ++i) {
            EXPECT_TRUE(test::sameFloat(dst[i], expected[i])) << src[i] << " became " << dst[i];
        }
    });
}

TEST(Vectors, PowersAreRoundedFromTheirExactValueOnEveryTarget) {
    std::mt19937 random(7);
    const std::vector<float> exponents{-0.5f, -1.5f, 0.2f,  -0.8f, -1.8f, 0.5f,
                                       1.0f,  2.0f,  -1.0f, -2.0f, 3.0f,  -3.0f,
                                       7.5f,  0.01f, 40.0f, 1e-6f, 1.2f,  1e30f};
    for (const float x : exponents) {
        std::vector<float> a(2001);
        for (float& v : a) {
            v = random() % 4 == 0
                    ? std::bit_cast<float>(static_cast<std::uint32_t>(random()) & 0x7fffffffu)
                    : std::uniform_real_distribution<float>(0.0f, 10.0f)(random);
        }
        std::vector<float> first;
        test::forEachTarget([&] {
            std::vector<float> y(a.size());
            EXPECT_EQ(vsPowx(static_cast<int>(a.size()), a.data(), x, y.data()), kOk);
            for (std::size_t i = 0; i < a.size(); ++i) {
                const double exact = std::pow(static_cast<double>(a[i]), static_cast<double>(x));
                if (std::isnan(exact)) {
                    EXPECT_TRUE(std::isnan(y[i]));
                    y[i] = 0.0f;
                } else {
                    ASSERT_LE(test::unitsOff(y[i], exact), 0.501) << a[i] << " to the " << x;
                }
            }
            if (first.empty()) {
                first = y;
            }
            EXPECT_EQ(y, first);
        });
    }
}

TEST(Vectors, PowersOfZeroInfinityNaNAndNegativeBasesFollowTheUsualRules) {
    const std::vector<float> bases{0.0f,  -0.0f, 1.0f,  -1.0f,     2.0f,       -2.0f,  0.5f,
                                   -0.5f, 1e30f, -3.0f, kInfinity, -kInfinity, 1e-38f, kNan};
    for (const float x : {0.0f, -0.0f, 1.0f, -1.0f, 2.0f, -2.0f, 3.0f, -3.0f, 0.5f, -0.5f, 1.5f,
                          -1.5f, 16777216.0f, 16777215.0f, kInfinity, -kInfinity, kNan}) {
        test::forEachTarget([&] {
            std::vector<float> y(bases.size());
            EXPECT_EQ(vsPowx(static_cast<int>(bases.size()), bases.data(), x, y.data()), kOk);
            for (std::size_t i = 0; i < bases.size(); ++i) {
                EXPECT_TRUE(test::sameFloat(y[i], std::pow(bases[i], x)))
                    << bases[i] << " to the " << x << " gave " << y[i];
            }
        });
    }
}

TEST(Vectors, PowersWorkInPlace) {
    std::vector<float> a{4.0f, 9.0f, 0.25f};
    EXPECT_EQ(vsPowx(3, a.data(), 0.5f, a.data()), kOk);
    EXPECT_EQ(a, (std::vector<float>{2.0f, 3.0f, 0.5f}));
}

TEST(Vectors, EveryRoutineChecksPointersThenTheLengthAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    const std::vector<test::CheckedRoutine> routines{
        {"vecF32toF64", 2, 1, 0,
         [](const Arguments& g) {
             return vecF32toF64(g.at<float>(0), g.at<double>(1), g.sizes[0]);
         }},
        {"vecF64toF32", 2, 1, 0,
         [](const Arguments& g) {
             return vecF64toF32(g.at<double>(0), g.at<float>(1), g.sizes[0]);
         }},
        {"vsAdd", 3, 1, 0,
         [](const Arguments& g) {
             return vsAdd(g.sizes[0], g.at<float>(0), g.at<float>(1), g.at<float>(2));
         }},
        {"vsSub", 3, 1, 0,
         [](const Arguments& g) {
             return vsSub(g.sizes[0], g.at<float>(0), g.at<float>(1), g.at<float>(2));
         }},
        {"vsAbs", 2, 1, 0,
         [](const Arguments& g) { return vsAbs(g.sizes[0], g.at<float>(0), g.at<float>(1)); }},
        {"vsPowx", 2, 1, 0, [](const Arguments& g) {
             return vsPowx(g.sizes[0], g.at<float>(0), 2.0f, g.at<float>(1));
         }}};
    for (const test::CheckedRoutine& routine : routines) {
        test::expectChecksInOrder(routine);
    }
}

} // namespace
