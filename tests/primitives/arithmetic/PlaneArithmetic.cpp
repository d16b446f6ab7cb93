#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/FloatComparison.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
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

using Binary = std::function<float(float, float)>;

/// Half ordinary values around the range of a tile, half awkward ones.
float randomFloat(std::mt19937& random) {
    return random() % 2 == 0 ? std::uniform_real_distribution<float>(-2.0f, 2.0f)(random)
                             : test::randomPixel<float>(random);
}

GuardedPlane<float> randomPlane(const PlaneShape& shape, std::mt19937& random) {
    auto plane = shape.plane<float>();
    plane.fill([&] { return randomFloat(random); });
    return plane;
}

using InPlace = Status (*)(const float*, std::int32_t, float*, std::int32_t, std::int32_t,
                           std::int32_t) noexcept;

/// `reference` receives the value of `srcDst` and then that of `src`.
void expectInPlace(InPlace routine, const Binary& reference) {
    std::mt19937 random(1);
    for (PlaneShape shape : test::planeShapes(random)) {
        const auto srcDst = randomPlane(shape, random);
        shape.extraStep /= 2;
        const auto src = randomPlane(shape, random);
        const auto expected =
            test::mapped(srcDst, [&](float v, int x, int y) { return reference(v, src.at(x, y)); });
        test::forEachTarget([&] {
            auto result = srcDst;
            ASSERT_GE(routine(src.data(), src.step(), result.data(), result.step(), shape.width,
                              shape.height),
                      kOk);
            EXPECT_TRUE(test::sameFloats(result, expected))
                << shape.width << " by " << shape.height;
            EXPECT_TRUE(result.intact());
        });
    }
}

using OnePlane = std::function<Status(float*, std::int32_t, std::int32_t, std::int32_t)>;

void expectOnePlane(const OnePlane& routine, const std::function<float(float)>& reference) {
    std::mt19937 random(3);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        const auto plane = randomPlane(shape, random);
        const auto expected = test::mapped(plane, [&](float v, int, int) { return reference(v); });
        test::forEachTarget([&] {
            auto result = plane;
            ASSERT_GE(routine(result.data(), result.step(), shape.width, shape.height), kOk);
            EXPECT_TRUE(test::sameFloats(result, expected))
                << shape.width << " by " << shape.height;
            EXPECT_TRUE(result.intact());
        });
    }
}

TEST(PlaneArithmetic, InPlaceFormsAreOneOperationPerPixelOnEveryTarget) {
    expectInPlace(addPlaneF32, [](float d, float s) { return d + s; });
    expectInPlace(subPlaneF32, [](float d, float s) { return d - s; });
    expectInPlace(mulPlaneF32, [](float d, float s) { return d * s; });
    expectInPlace(divPlaneInPlaceF32, [](float d, float s) { return d / s; });
}

TEST(PlaneArithmetic, SubPlanesIsOneOperationPerPixelIntoAnyOfTheThreePlanesOnEveryTarget) {
    std::mt19937 random(2);
    for (PlaneShape shape : test::planeShapes(random)) {
        const auto a = randomPlane(shape, random);
        shape.extraStep /= 2;
        const auto b = randomPlane(shape, random);
        const auto expected =
            test::mapped(b, [&](float v, int x, int y) { return v - a.at(x, y); });
        const auto expectDifference = [&](const auto& from, const auto& to, auto& dst) {
            ASSERT_EQ(subPlanesF32(from.data(), from.step(), to.data(), to.step(), dst.data(),
                                   dst.step(), shape.width, shape.height),
                      kOk);
            EXPECT_TRUE(test::sameFloats(dst, expected)) << shape.width << " by " << shape.height;
            EXPECT_TRUE(dst.intact());
        };
        test::forEachTarget([&] {
            auto apart = shape.plane<float>();
            expectDifference(a, b, apart);
            auto intoB = b;
            expectDifference(a, intoB, intoB);
            auto intoA = a;
            expectDifference(intoA, b, intoA);
        });
    }
}

TEST(PlaneArithmetic, PlaneMayBeCombinedWithItself) {
    test::forEachTarget([] {
        std::vector<float> plane{1.5f, -2.0f, 3.0f};
        EXPECT_EQ(mulPlaneF32(plane.data(), 12, plane.data(), 12, 3, 1), kOk);
        EXPECT_EQ(plane, (std::vector<float>{2.25f, 4.0f, 9.0f}));
        EXPECT_EQ(addPlaneF32(plane.data(), 12, plane.data(), 12, 3, 1), kOk);
        EXPECT_EQ(plane, (std::vector<float>{4.5f, 8.0f, 18.0f}));
        EXPECT_EQ(subPlaneF32(plane.data(), 12, plane.data(), 12, 3, 1), kOk);
        EXPECT_EQ(plane, (std::vector<float>{0.0f, 0.0f, 0.0f}));
    });
}

TEST(PlaneArithmetic, SubPlanesTakesTheFirstPlaneFromTheSecond) {
    const float a[] = {1.0f, 10.0f};
    const float b[] = {5.0f, 4.0f};
    float dst[2];
    EXPECT_EQ(subPlanesF32(a, 8, b, 8, dst, 8, 2, 1), kOk);
    EXPECT_EQ(dst[0], 4.0f);
    EXPECT_EQ(dst[1], -6.0f);
}

TEST(PlaneArithmetic, DivisorOfZeroWarnsAndAllOtherPixelsAreDivided) {
    for (const float zero : {0.0f, -0.0f}) {
        for (int at = 0; at < 67; ++at) {
            test::forEachTarget([&] {
                std::vector<float> src(67, 2.0f);
                std::vector<float> srcDst(67, 1.0f);
                src[static_cast<std::size_t>(at)] = zero;
                EXPECT_EQ(divPlaneInPlaceF32(src.data(), 268, srcDst.data(), 268, 67, 1),
                          kDivisionByZero);
                EXPECT_EQ(srcDst[static_cast<std::size_t>(at)], 1.0f / zero);
                EXPECT_EQ(std::count(srcDst.begin(), srcDst.end(), 0.5f), 66);
            });
        }
    }
}

TEST(PlaneArithmetic, ZeroDividedByZeroIsNaNAndWarns) {
    const float src = 0.0f;
    float srcDst = 0.0f;
    EXPECT_EQ(divPlaneInPlaceF32(&src, 4, &srcDst, 4, 1, 1), kDivisionByZero);
    EXPECT_TRUE(std::isnan(srcDst));
}

TEST(PlaneArithmetic, DivisionWithoutAZeroDoesNotWarn) {
    const float src[] = {kNan, kInfinity, 1.0f, -3.0f};
    float srcDst[] = {1.0f, 1.0f, 0.0f, kNan};
    EXPECT_EQ(divPlaneInPlaceF32(src, 16, srcDst, 16, 4, 1), kOk);
    EXPECT_TRUE(std::isnan(srcDst[0]));
    EXPECT_EQ(srcDst[1], 0.0f);
    EXPECT_EQ(srcDst[2], 0.0f);
    EXPECT_TRUE(std::isnan(srcDst[3]));
}

TEST(PlaneArithmetic, MulConstWorksIntoAnotherPlaneAndInPlace) {
    std::mt19937 random(5);
    for (const float c : {0.3f, -1.0f, 0.0f, kInfinity, kNan, 1e-40f}) {
        for (PlaneShape shape : test::planeShapes(random)) {
            const auto src = randomPlane(shape, random);
            const auto expected = test::mapped(src, [&](float v, int, int) { return v * c; });
            shape.extraStep += 3;
            test::forEachTarget([&] {
                auto dst = shape.plane<float>();
                ASSERT_EQ(mulConstF32(src.data(), src.step(), c, dst.data(), dst.step(),
                                      shape.width, shape.height),
                          kOk);
                EXPECT_TRUE(test::sameFloats(dst, expected));
                EXPECT_TRUE(dst.intact());
                auto same = src;
                ASSERT_EQ(mulConstF32(same.data(), same.step(), c, same.data(), same.step(),
                                      shape.width, shape.height),
                          kOk);
                EXPECT_TRUE(test::sameFloats(same, expected));
            });
        }
    }
}

TEST(PlaneArithmetic, ConstantsInPlaceAreOneOperationPerPixelOnEveryTarget) {
    for (const float c : {0.00191f, -3.0f, kInfinity, kNan}) {
        expectOnePlane([c](float* p, auto step, auto w,
                           auto h) { return addConstInPlaceF32(c, p, step, w, h); },
                       [c](float v) { return v + c; });
        expectOnePlane([c](float* p, auto step, auto w,
                           auto h) { return mulConstInPlaceF32(c, p, step, w, h); },
                       [c](float v) { return v * c; });
    }
}

TEST(PlaneArithmetic, ClampsChangeOnlyValuesBeyondTheLevelOnEveryTarget) {
    for (const float level : {0.5f, -1.0f, 0.0f, -0.0f, kInfinity, -kInfinity, kNan}) {
        expectOnePlane([=](float* p, auto step, auto w,
                           auto h) { return clampAboveInPlaceF32(p, step, w, h, level); },
                       [=](float v) { return v > level ? level : v; });
        expectOnePlane([=](float* p, auto step, auto w,
                           auto h) { return clampBelowInPlaceF32(p, step, w, h, level); },
                       [=](float v) { return v < level ? level : v; });
    }
}

TEST(PlaneArithmetic, BothClampsTogetherGiveTheRangeZeroToOne) {
    test::forEachTarget([] {
        std::vector<float> plane{-0.1f, 0.0f, 0.5f, 1.0f, 1.1f, kInfinity, -kInfinity};
        EXPECT_EQ(clampAboveInPlaceF32(plane.data(), 28, 7, 1, 1.0f), kOk);
        EXPECT_EQ(clampBelowInPlaceF32(plane.data(), 28, 7, 1, 0.0f), kOk);
        EXPECT_EQ(plane, (std::vector<float>{0.0f, 0.0f, 0.5f, 1.0f, 1.0f, 1.0f, 0.0f}));
    });
}

TEST(PlaneArithmetic, ClampsKeepNaN) {
    test::forEachTarget([] {
        std::vector<float> plane(37, kNan);
        EXPECT_EQ(clampAboveInPlaceF32(plane.data(), 148, 37, 1, 1.0f), kOk);
        EXPECT_EQ(clampBelowInPlaceF32(plane.data(), 148, 37, 1, 0.0f), kOk);
        EXPECT_TRUE(std::all_of(plane.begin(), plane.end(), [](float v) { return std::isnan(v); }));
    });
}

TEST(PlaneArithmetic, LogarithmIsRoundedFromItsExactValueOnEveryTarget) {
    std::mt19937 random(7);
    std::vector<float> values{1.0f,
                              std::nextafter(1.0f, 2.0f),
                              std::nextafter(1.0f, 0.0f),
                              std::numeric_limits<float>::min(),
                              std::numeric_limits<float>::denorm_min(),
                              std::numeric_limits<float>::max(),
                              0.70710678f,
                              1.41421356f,
                              2.0f,
                              0.5f,
                              2.71828183f};
    while (values.size() < 50000) {
        const auto bits = static_cast<std::uint32_t>(random()) & 0x7fffffffu;
        const auto v = std::bit_cast<float>(bits);
        values.push_back(std::isfinite(v) && v > 0.0f
                             ? v
                             : std::uniform_real_distribution<float>(0.9f, 1.1f)(random));
    }
    const auto count = static_cast<std::int32_t>(values.size());
    std::vector<float> first;
    test::forEachTarget([&] {
        auto logs = values;
        EXPECT_EQ(logInPlaceF32(logs.data(), 4 * count, count, 1), kOk);
        for (std::size_t i = 0; i < logs.size(); ++i) {
            const double exact = std::log(static_cast<double>(values[i]));
            ASSERT_LE(test::unitsOff(logs[i], exact), 0.501) << values[i];
        }
        if (first.empty()) {
            first = logs;
        }
        EXPECT_EQ(logs, first);
    });
}

TEST(PlaneArithmetic, LogarithmIsTheSameForEveryShapeOnEveryTarget) {
    expectOnePlane([](float* p, auto step, auto w, auto h) { return logInPlaceF32(p, step, w, h); },
                   [](float v) {
                       float alone = v;
                       logInPlaceF32(&alone, 4, 1, 1);
                       return alone;
                   });
}

TEST(PlaneArithmetic, LogarithmOfZeroAndOfNegativeNumbersWarnsAndTheRestIsComputed) {
    struct Case {
        float v;
        float log;
        Status status;
    };
    for (const Case& c :
         {Case{0.0f, -kInfinity, kDivisionByZero}, Case{-0.0f, -kInfinity, kDivisionByZero},
          Case{-1.0f, kNan, kDivisionByZero}, Case{-kInfinity, kNan, kDivisionByZero},
          Case{kNan, kNan, kOk}, Case{kInfinity, kInfinity, kOk}, Case{1.0f, 0.0f, kOk}}) {
        for (int at = 0; at < 40; ++at) {
            test::forEachTarget([&] {
                GuardedPlane<float> plane(20, 2, 3, 1);
                plane.fill([] { return 1.0f; });
                plane.set(at % 20, at / 20, c.v);
                EXPECT_EQ(logInPlaceF32(plane.data(), plane.step(), 20, 2), c.status);
                EXPECT_TRUE(test::sameFloat(plane.at(at % 20, at / 20), c.log)) << c.v;
                plane.set(at % 20, at / 20, 0.0f);
                for (int x = 0; x < 20; ++x) {
                    EXPECT_EQ(plane.at(x, 0), 0.0f);
                    EXPECT_EQ(plane.at(x, 1), 0.0f);
                }
            });
        }
    }
}

bool holds(float a, float b, Comparison op) {
    switch (op) {
    case kLess:
        return a < b;
    case kLessOrEqual:
        return a <= b;
    case kEqual:
        return a == b;
    case kGreaterOrEqual:
        return a >= b;
    case kGreater:
        return a > b;
    }
    return false;
}

TEST(PlaneArithmetic, EveryComparisonMarksWhereItHoldsOnEveryTarget) {
    std::mt19937 random(11);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        const auto a = randomPlane(shape, random);
        auto b = randomPlane(shape, random);
        b = test::mapped(b,
                         [&](float v, int x, int y) { return random() % 3 == 0 ? a.at(x, y) : v; });
        for (const Comparison op : {kLess, kLessOrEqual, kEqual, kGreaterOrEqual, kGreater}) {
            const auto expected =
                test::mapped(shape.plane<std::uint8_t>(), [&](std::uint8_t, int x, int y) {
                    return static_cast<std::uint8_t>(holds(a.at(x, y), b.at(x, y), op) ? 255 : 0);
                });
            test::forEachTarget([&] {
                auto dst = shape.plane<std::uint8_t>();
                ASSERT_EQ(comparePlanesF32(a.data(), a.step(), b.data(), b.step(), dst.data(),
                                           dst.step(), shape.width, shape.height, op),
                          kOk);
                EXPECT_TRUE(dst.sameBits(expected)) << "op " << op << ", width " << shape.width;
                EXPECT_TRUE(dst.intact());
            });
        }
    }
}

TEST(PlaneArithmetic, UnknownComparisonIsRefusedAfterAllOtherChecks) {
    const float a = 1.0f;
    std::uint8_t dst = 77;
    for (const std::int32_t code : {-1, 5, INT32_MIN, INT32_MAX}) {
        const auto op = static_cast<Comparison>(code);
        EXPECT_EQ(comparePlanesF32(&a, 4, &a, 4, &dst, 1, 1, 1, op), kBadMask);
        EXPECT_EQ(comparePlanesF32(&a, 4, &a, 4, &dst, 0, 1, 1, op), kBadStep);
    }
    EXPECT_EQ(dst, 77);
}

using Arguments = test::CheckedArguments;
using Routines = std::vector<test::CheckedRoutine>;

Routines routinesOnPlanes() {
    const auto inPlace = [](InPlace routine) {
        return [routine](const Arguments& g) {
            return routine(g.at<float>(0), g.steps[0], g.at<float>(1), g.steps[1], g.sizes[0],
                           g.sizes[1]);
        };
    };
    return {{"addPlaneF32", 2, 2, 2, inPlace(addPlaneF32)},
            {"subPlaneF32", 2, 2, 2, inPlace(subPlaneF32)},
            {"mulPlaneF32", 2, 2, 2, inPlace(mulPlaneF32)},
            {"divPlaneInPlaceF32", 2, 2, 2, inPlace(divPlaneInPlaceF32)},
            {"subPlanesF32", 3, 2, 3,
             [](const Arguments& g) {
                 return subPlanesF32(g.at<float>(0), g.steps[0], g.at<float>(1), g.steps[1],
                                     g.at<float>(2), g.steps[2], g.sizes[0], g.sizes[1]);
             }},
            {"comparePlanesF32", 3, 2, 3, [](const Arguments& g) {
                 return comparePlanesF32(g.at<float>(0), g.steps[0], g.at<float>(1), g.steps[1],
                                         g.at<std::uint8_t>(2), g.steps[2], g.sizes[0], g.sizes[1],
                                         kLess);
             }}};
}

Routines routinesOnOnePlane() {
    return {
        {"mulConstF32", 2, 2, 2,
         [](const Arguments& g) {
             return mulConstF32(g.at<float>(0), g.steps[0], 2.0f, g.at<float>(1), g.steps[1],
                                g.sizes[0], g.sizes[1]);
         }},
        {"addConstInPlaceF32", 1, 2, 1,
         [](const Arguments& g) {
             return addConstInPlaceF32(2.0f, g.at<float>(0), g.steps[0], g.sizes[0], g.sizes[1]);
         }},
        {"mulConstInPlaceF32", 1, 2, 1,
         [](const Arguments& g) {
             return mulConstInPlaceF32(2.0f, g.at<float>(0), g.steps[0], g.sizes[0], g.sizes[1]);
         }},
        {"clampAboveInPlaceF32", 1, 2, 1,
         [](const Arguments& g) {
             return clampAboveInPlaceF32(g.at<float>(0), g.steps[0], g.sizes[0], g.sizes[1], -9.0f);
         }},
        {"clampBelowInPlaceF32", 1, 2, 1,
         [](const Arguments& g) {
             return clampBelowInPlaceF32(g.at<float>(0), g.steps[0], g.sizes[0], g.sizes[1], 9.0f);
         }},
        {"logInPlaceF32", 1, 2, 1, [](const Arguments& g) {
             return logInPlaceF32(g.at<float>(0), g.steps[0], g.sizes[0], g.sizes[1]);
         }}};
}

TEST(PlaneArithmetic, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    for (const Routines& routines : {routinesOnPlanes(), routinesOnOnePlane()}) {
        for (const test::CheckedRoutine& routine : routines) {
            test::expectChecksInOrder(routine);
        }
    }
}

} // namespace
