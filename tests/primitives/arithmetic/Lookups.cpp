#include "velimproclib/primitives/arithmetic/Lookups.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/FloatComparison.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"
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
using test::GuardedPlane;
using test::PlaneShape;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

struct Knots {
    std::vector<float> levels;
    std::vector<float> values;

    std::int32_t count() const { return static_cast<std::int32_t>(levels.size()); }
};

/// The first interval that holds v, by the definition; -1 for none.
int intervalOf(float v, const std::vector<float>& levels) {
    for (std::size_t k = 0; k + 1 < levels.size(); ++k) {
        if (levels[k] <= v && v < levels[k + 1]) {
            return static_cast<int>(k);
        }
    }
    return -1;
}

float linearReference(float v, const Knots& knots) {
    const int interval = intervalOf(v, knots.levels);
    if (interval < 0) {
        return v;
    }
    const auto k = static_cast<std::size_t>(interval);
    const double base = knots.levels[k];
    const double slope = (static_cast<double>(knots.values[k + 1]) - knots.values[k]) /
                         (static_cast<double>(knots.levels[k + 1]) - base);
    return static_cast<float>((static_cast<double>(v) - base) * slope + knots.values[k]);
}

/// Lagrange's form of the cubic, in extended precision.
double cubicExactly(float v, const Knots& knots) {
    const int interval = intervalOf(v, knots.levels);
    if (interval < 0) {
        return v;
    }
    const auto j = static_cast<std::size_t>(
        std::clamp(interval - 1, 0, static_cast<int>(knots.levels.size()) - 4));
    long double sum = 0;
    for (std::size_t i = j; i < j + 4; ++i) {
        long double term = knots.values[i];
        for (std::size_t other = j; other < j + 4; ++other) {
            if (other != i) {
                term *= (static_cast<long double>(v) - knots.levels[other]) /
                        (static_cast<long double>(knots.levels[i]) - knots.levels[other]);
            }
        }
        sum += term;
    }
    return static_cast<double>(sum);
}

/// `n` rising levels with tiny and wide steps, and random values.
Knots randomKnots(int n, std::mt19937& random) {
    Knots knots;
    std::uniform_real_distribution<float> value(-3.0f, 3.0f);
    float level = -static_cast<float>(n) / 3.0f;
    for (int i = 0; i < n; ++i) {
        knots.levels.push_back(level);
        knots.values.push_back(value(random));
        level += random() % 5 == 0 ? 0.0001f : 0.2f + std::fabs(value(random)) / 3.0f;
    }
    return knots;
}

/// Levels of the deconvolver's shrinkage at its first pass.
const Knots kShrink{{-10.0f, -2.2374f, -1.7233f, -1.5306f, -1.5001f, -1.5f, 1.5f, 1.5001f, 1.6601f,
                     2.0427f, 4.1799f, 10.0f},
                    {-9.84061f, -1.87195f, -1.28164f, -1.04041f, -1.00013f, 0.0f, 0.0f, 1.00013f,
                     1.20452f, 1.65391f, 3.92761f, 9.84061f}};

/// A pixel within the levels, on one of them or next to it, beyond them, or an awkward float.
float randomPixelFor(const Knots& knots, std::mt19937& random) {
    const float level = knots.levels[random() % knots.levels.size()];
    switch (random() % 8) {
    case 0:
        return level;
    case 1:
        return std::nextafter(level, kInfinity);
    case 2:
        return std::nextafter(level, -kInfinity);
    case 3:
        return test::randomPixel<float>(random);
    default: {
        const auto [lowest, highest] =
            std::minmax_element(knots.levels.begin(), knots.levels.end());
        return std::uniform_real_distribution<float>(*lowest - 0.5f, *highest + 0.5f)(random);
    }
    }
}

GuardedPlane<float> randomPlane(const PlaneShape& shape, const Knots& knots, std::mt19937& random) {
    auto plane = shape.plane<float>();
    plane.fill([&] { return randomPixelFor(knots, random); });
    return plane;
}

Status linear(const GuardedPlane<float>& src, GuardedPlane<float>& dst, const Knots& knots) {
    return lutLinearF32(src.data(), src.step(), dst.data(), dst.step(), dst.width(), dst.height(),
                        knots.values.data(), knots.levels.data(), knots.count());
}

Status cubic(GuardedPlane<float>& plane, const Knots& knots) {
    return lutCubicInPlaceF32(plane.data(), plane.step(), plane.width(), plane.height(),
                              knots.values.data(), knots.levels.data(), knots.count());
}

float linearOne(float v, const Knots& knots) {
    float result = 0.0f;
    EXPECT_EQ(lutLinearF32(&v, 4, &result, 4, 1, 1, knots.values.data(), knots.levels.data(),
                           knots.count()),
              kOk);
    return result;
}

float cubicOne(float v, const Knots& knots) {
    EXPECT_EQ(
        lutCubicInPlaceF32(&v, 4, 1, 1, knots.values.data(), knots.levels.data(), knots.count()),
        kOk);
    return v;
}

void expectLinear(const PlaneShape& shape, const Knots& knots, std::mt19937& random) {
    SCOPED_TRACE(testing::Message()
                 << knots.count() << " levels, " << shape.width << " by " << shape.height);
    const auto src = randomPlane(shape, knots, random);
    const auto expected =
        test::mapped(src, [&](float v, int, int) { return linearReference(v, knots); });
    PlaneShape dstShape = shape;
    dstShape.extraStep = (shape.extraStep * 5) % 11;
    test::forEachTarget([&] {
        auto dst = dstShape.plane<float>();
        ASSERT_EQ(linear(src, dst, knots), kOk);
        EXPECT_TRUE(dst.sameBits(expected));
        EXPECT_TRUE(dst.intact());
        auto inPlace = src;
        ASSERT_EQ(linear(inPlace, inPlace, knots), kOk);
        EXPECT_TRUE(inPlace.sameBits(expected));
        EXPECT_TRUE(inPlace.intact());
    });
}

TEST(LutLinear, FollowsTheDefinitionBitForBitOnEveryTarget) {
    std::mt19937 random(1);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        expectLinear(shape, kShrink, random);
        expectLinear(shape, randomKnots(static_cast<int>(random() % 38) + 2, random), random);
    }
}

TEST(LutLinear, FollowsTheDefinitionForEveryNumberOfLevels) {
    std::mt19937 random(2);
    for (int n = 2; n <= 70; ++n) {
        expectLinear({131, 3, 3, 1}, randomKnots(n, random), random);
    }
    expectLinear({131, 3, 0, 0}, randomKnots(1000, random), random);
}

TEST(LutLinear, PixelsBelongToTheFirstIntervalThatHoldsThemForLevelsInAnyOrder) {
    std::mt19937 random(3);
    for (int n = 2; n <= 40; ++n) {
        Knots knots = randomKnots(n, random);
        std::shuffle(knots.levels.begin(), knots.levels.end(), random);
        expectLinear({131, 3, 3, 1}, knots, random);
    }
}

TEST(LutLinear, NaNLevelBoundsNoInterval) {
    std::mt19937 random(4);
    for (std::size_t at = 0; at < kShrink.levels.size(); ++at) {
        Knots knots = kShrink;
        knots.levels[at] = kNan;
        const float pixels[] = {-11.0f, -10.0f, -2.0f, -1.5f, 0.0f, 1.50005f, 2.0f, 9.0f, 10.0f};
        for (const float v : pixels) {
            EXPECT_TRUE(test::sameFloat(linearOne(v, knots), linearReference(v, knots))) << v;
        }
    }
}

TEST(LutLinear, EmptyIntervalHoldsNoPixel) {
    const Knots knots{{0.0f, 1.0f, 1.0f, 1.0f, 2.0f}, {0.0f, 10.0f, 20.0f, 30.0f, 40.0f}};
    test::forEachTarget([&] {
        EXPECT_EQ(linearOne(0.5f, knots), 5.0f);
        EXPECT_EQ(linearOne(1.0f, knots), 30.0f);
        EXPECT_EQ(linearOne(1.5f, knots), 35.0f);
    });
    const Knots nothing{{1.0f, 1.0f}, {5.0f, 6.0f}};
    EXPECT_EQ(linearOne(1.0f, nothing), 1.0f);
    const Knots atTheEnds{{0.0f, 0.0f, 1.0f, 1.0f}, {7.0f, 0.0f, 1.0f, 8.0f}};
    EXPECT_EQ(linearOne(0.0f, atTheEnds), 0.0f);
    EXPECT_EQ(linearOne(1.0f, atTheEnds), 1.0f);
}

TEST(LutLinear, PixelsOutsideTheLevelsAreCopied) {
    const Knots knots{{-1.0f, 1.0f}, {5.0f, 7.0f}};
    test::forEachTarget([&] {
        EXPECT_EQ(linearOne(-1.0f, knots), 5.0f);
        EXPECT_EQ(linearOne(0.0f, knots), 6.0f);
        EXPECT_EQ(linearOne(std::nextafter(-1.0f, -2.0f), knots), std::nextafter(-1.0f, -2.0f));
        EXPECT_EQ(linearOne(1.0f, knots), 1.0f);
        EXPECT_EQ(linearOne(kInfinity, knots), kInfinity);
        EXPECT_EQ(linearOne(-kInfinity, knots), -kInfinity);
    });
}

TEST(LutLinear, PixelAtTheLastLevelOfTheShrinkageStaysTen) {
    EXPECT_EQ(linearOne(10.0f, kShrink), 10.0f);
    EXPECT_EQ(linearOne(-10.0f, kShrink), -9.84061f);
}

TEST(LutLinear, NaNIsCopiedBitForBit) {
    for (const std::uint32_t bits : {0x7fc00000u, 0xffc00001u, 0x7f800001u, 0xffabcdefu}) {
        test::forEachTarget([&] {
            for (const Knots& knots : {kShrink, Knots{{1.0f, 0.0f, 2.0f}, {0.0f, 0.0f, 0.0f}}}) {
                std::vector<std::uint32_t> pixels(37, bits);
                std::vector<std::uint32_t> result(37);
                EXPECT_EQ(lutLinearF32(reinterpret_cast<const float*>(pixels.data()), 148,
                                       reinterpret_cast<float*>(result.data()), 148, 37, 1,
                                       knots.values.data(), knots.levels.data(), knots.count()),
                          kOk);
                EXPECT_EQ(result, pixels);
            }
        });
    }
}

TEST(LutLinear, FewerThanTwoLevelsAreRefusedAndTheTargetIsUnchanged) {
    for (const std::int32_t n : {1, 0, -5, INT32_MIN}) {
        const float src = 0.5f;
        const float knot = 0.0f;
        float dst = 77.0f;
        EXPECT_EQ(lutLinearF32(&src, 4, &dst, 4, 1, 1, &knot, &knot, n), kTooFewLutLevels);
        EXPECT_EQ(lutCubicInPlaceF32(&dst, 4, 1, 1, &knot, &knot, n), kTooFewLutLevels);
        EXPECT_EQ(lutLinearF32(&src, 4, &dst, 0, 1, 1, &knot, &knot, n), kBadStep);
        EXPECT_EQ(lutCubicInPlaceF32(&dst, 0, 1, 1, &knot, &knot, n), kBadStep);
        EXPECT_EQ(dst, 77.0f);
    }
}

TEST(LutCubic, FewerThanFourLevelsAreLinear) {
    std::mt19937 random(5);
    for (const int n : {2, 3}) {
        const Knots knots = randomKnots(n, random);
        const auto plane = randomPlane({67, 3, 3, 1}, knots, random);
        test::forEachTarget([&] {
            auto byCubic = plane;
            auto byLinear = plane;
            EXPECT_EQ(cubic(byCubic, knots), kOk);
            EXPECT_EQ(linear(plane, byLinear, knots), kOk);
            EXPECT_TRUE(byCubic.sameBits(byLinear));
        });
    }
}

TEST(LutCubic, CubicPolynomialIsReproducedInEveryInterval) {
    const auto polynomial = [](double v) { return ((0.5 * v - 1.0) * v + 2.0) * v - 3.0; };
    for (int n = 4; n <= 40; ++n) {
        Knots knots;
        for (int i = 0; i < n; ++i) {
            const double level = i * 0.25 - 2.0;
            knots.levels.push_back(static_cast<float>(level));
            knots.values.push_back(static_cast<float>(polynomial(level)));
        }
        for (float v = knots.levels.front(); v < knots.levels.back(); v += 0.0625f) {
            EXPECT_EQ(cubicOne(v, knots), static_cast<float>(polynomial(v))) << v << ", n " << n;
        }
    }
}

TEST(LutCubic, EveryKnotButTheLastGivesItsValue) {
    std::mt19937 random(6);
    for (int n = 4; n <= 40; ++n) {
        const Knots knots = randomKnots(n, random);
        test::forEachTarget([&] {
            for (std::size_t i = 0; i + 1 < knots.levels.size(); ++i) {
                EXPECT_NEAR(cubicOne(knots.levels[i], knots), knots.values[i], 1e-5f);
            }
        });
        EXPECT_EQ(cubicOne(knots.levels.back(), knots), knots.levels.back());
    }
}

TEST(LutCubic, AgreesWithLagrangesFormOnEveryTarget) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(-3.0f, 3.0f);
    for (int n = 4; n <= 40; ++n) {
        Knots knots = randomKnots(n, random);
        for (std::size_t i = 0; i < knots.levels.size(); ++i) {
            knots.levels[i] = static_cast<float>(i) - 5.0f + value(random) / 10.0f;
        }
        const auto plane = randomPlane({131, 2, 3, 1}, knots, random);
        test::forEachTarget([&] {
            auto result = plane;
            ASSERT_EQ(cubic(result, knots), kOk);
            for (int y = 0; y < 2; ++y) {
                for (int x = 0; x < 131; ++x) {
                    const float v = plane.at(x, y);
                    if (intervalOf(v, knots.levels) < 0) {
                        EXPECT_TRUE(test::sameFloat(result.at(x, y), v));
                    } else {
                        const double exact = cubicExactly(v, knots);
                        EXPECT_NEAR(result.at(x, y), exact, 1e-6 * std::max(1.0, std::fabs(exact)));
                    }
                }
            }
        });
    }
}

TEST(LutCubic, TheEndIntervalsShareThePolynomialOfTheirNeighbour) {
    // An interval depends on its four knots only.
    const Knots knots{{0, 1, 2, 3, 4, 5, 6, 7}, {0, 1, -1, 2, -2, 3, -3, 4}};
    for (std::size_t interval = 0; interval < 7; ++interval) {
        const std::size_t j = interval == 0 ? 0 : std::min<std::size_t>(interval - 1, 4);
        const float v = static_cast<float>(interval) + 0.375f;
        for (std::size_t moved = 0; moved < 8; ++moved) {
            Knots other = knots;
            other.values[moved] += 1.0f;
            const bool isOneOfTheFour = moved >= j && moved < j + 4;
            EXPECT_EQ(cubicOne(v, other) != cubicOne(v, knots), isOneOfTheFour)
                << "interval " << interval << ", knot " << moved;
        }
    }
}

TEST(LutCubic, EveryShapeGivesTheResultsOfSinglePixelsOnEveryTarget) {
    std::mt19937 random(8);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        const Knots knots = randomKnots(static_cast<int>(random() % 40) + 4, random);
        const auto plane = randomPlane(shape, knots, random);
        const auto expected =
            test::mapped(plane, [&](float v, int, int) { return cubicOne(v, knots); });
        test::forEachTarget([&] {
            auto result = plane;
            ASSERT_EQ(cubic(result, knots), kOk);
            EXPECT_TRUE(result.sameBits(expected)) << shape.width << " by " << shape.height;
            EXPECT_TRUE(result.intact());
        });
    }
}

TEST(LutCubic, UnusedLevelsAtTheEndDoNotChangeTheIntervalsBefore) {
    // The number of levels selects the search; the polynomials stay the same.
    std::mt19937 random(9);
    const Knots many = randomKnots(60, random);
    const auto plane = randomPlane({131, 3, 3, 1}, many, random);
    auto byMany = plane;
    ASSERT_EQ(cubic(byMany, many), kOk);
    for (int n = 6; n < 60; ++n) {
        Knots few = many;
        few.levels.resize(static_cast<std::size_t>(n));
        few.values.resize(static_cast<std::size_t>(n));
        auto byFew = plane;
        ASSERT_EQ(cubic(byFew, few), kOk);
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 131; ++x) {
                const int k = intervalOf(plane.at(x, y), many.levels);
                if (k >= 0 && k < n - 2) {
                    EXPECT_TRUE(test::sameFloat(byFew.at(x, y), byMany.at(x, y)));
                }
            }
        }
    }
}

TEST(LutCubic, EqualLevelsGiveFiniteResults) {
    const Knots knots{{0, 1, 1, 1, 2, 2, 3}, {0, 1, 2, 3, 4, 5, 6}};
    test::forEachTarget([&] {
        for (const float v : {0.0f, 0.5f, 1.0f, 1.5f, 2.0f, 2.5f}) {
            EXPECT_TRUE(std::isfinite(cubicOne(v, knots))) << v;
        }
    });
}

TEST(LutCubic, ResultsBeyondTheRangeOfFloatsAreInfiniteOnEveryTarget) {
    const Knots knots{{0, 1, 2, 3}, {3e38f, 3e38f, -3e38f, -3e38f}};
    test::forEachTarget([&] {
        EXPECT_EQ(cubicOne(0.5f, knots), kInfinity);
        EXPECT_EQ(cubicOne(2.5f, knots), -kInfinity);
        EXPECT_EQ(cubicOne(1.5f, knots), 0.0f);
    });
}

TEST(LutCubic, PixelsOutsideTheLevelsAndNaNAreNotChanged) {
    const Knots knots{{-1, 0, 1, 2}, {5, 6, 7, 9}};
    test::forEachTarget([&] {
        for (const float v : {-1.5f, 2.0f, 3.0f, kInfinity, -kInfinity, kNan}) {
            EXPECT_TRUE(test::sameFloat(cubicOne(v, knots), v));
        }
    });
}

TEST(Lookups, InfiniteLevelsAndValuesGiveTheSameResultsOnEveryTarget) {
    const Knots knots{{-kInfinity, -1.0f, 0.0f, 1.0f, kInfinity},
                      {0.0f, kInfinity, 1.0f, kNan, 2.0f}};
    for (const float v : {-kInfinity, -5.0f, -1.0f, -0.5f, 0.5f, 1.0f, 5.0f, kInfinity, kNan}) {
        const float cubicOfBest = cubicOne(v, knots);
        test::forEachTarget([&] {
            EXPECT_TRUE(test::sameFloat(linearOne(v, knots), linearReference(v, knots))) << v;
            EXPECT_TRUE(test::sameFloat(cubicOne(v, knots), cubicOfBest)) << v;
        });
    }
}

TEST(Lookups, BothCheckPointersThenSizesThenStepsAndWriteNothing) {
    using Arguments = test::CheckedArguments;
    test::expectChecksInOrder({"lutLinearF32", 4, 2, 2, [](const Arguments& g) {
                                   return lutLinearF32(g.at<float>(0), g.steps[0], g.at<float>(1),
                                                       g.steps[1], g.sizes[0], g.sizes[1],
                                                       g.at<float>(2), g.at<float>(3), 5);
                               }});
    for (const std::int32_t n : {5, 3}) {
        test::expectChecksInOrder({"lutCubicInPlaceF32", 3, 2, 1, [n](const Arguments& g) {
                                       return lutCubicInPlaceF32(g.at<float>(0), g.steps[0],
                                                                 g.sizes[0], g.sizes[1],
                                                                 g.at<float>(1), g.at<float>(2), n);
                                   }});
    }
}

} // namespace
