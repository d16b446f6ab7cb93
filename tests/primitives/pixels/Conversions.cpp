#include "velimproclib/primitives/pixels/Conversions.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

namespace {

using namespace vel;
using test::GuardedPlane;
using test::PlaneShape;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// The definition, one element at a time.
template <class To, class From>
To converted(From value, std::int32_t round) {
    if constexpr (std::is_floating_point_v<From>) {
        if (std::isnan(value)) {
            return 0;
        }
        const double rounded = round == kToNearestEven ? std::nearbyint(static_cast<double>(value))
                                                       : std::trunc(static_cast<double>(value));
        const double lowest = std::numeric_limits<To>::min();
        const double highest = std::numeric_limits<To>::max();
        return static_cast<To>(std::fmin(std::fmax(rounded, lowest), highest));
    } else if constexpr (std::is_floating_point_v<To>) {
        return static_cast<To>(value);
    } else {
        constexpr auto kHighest = std::numeric_limits<To>::max();
        return value > kHighest ? kHighest : static_cast<To>(value);
    }
}

template <class From, class To, class... Round>
using Conversion = Status (*)(const From*, std::int32_t, To*, std::int32_t, std::int32_t,
                              std::int32_t, Round...) noexcept;

template <class From, class To, class... Round>
void expectMatchesDefinition(Conversion<From, To, Round...> convert, Round... round) {
    std::mt19937 random(4711);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        GuardedPlane<From> src(shape.width, shape.height, shape.extraStep, shape.misalign);
        GuardedPlane<To> expected(shape.width, shape.height, shape.extraStep / 2,
                                  shape.misalign / 3);
        src.fill([&] { return test::randomPixel<From>(random); });
        for (int y = 0; y < shape.height; ++y) {
            for (int x = 0; x < shape.width; ++x) {
                expected.set(x, y, converted<To>(src.at(x, y), (kTowardZero + ... + round)));
            }
        }
        test::forEachTarget([&] {
            GuardedPlane<To> dst(shape.width, shape.height, shape.extraStep / 2,
                                 shape.misalign / 3);
            ASSERT_EQ(convert(src.data(), src.step(), dst.data(), dst.step(), shape.width,
                              shape.height, round...),
                      kOk);
            EXPECT_TRUE(dst.sameBits(expected)) << shape.width << " by " << shape.height;
            EXPECT_TRUE(dst.intact());
        });
    }
}

template <class From, class To>
void expectMatchesDefinitionForBothRoundings(Conversion<From, To, std::int32_t> convert) {
    expectMatchesDefinition<From, To, std::int32_t>(convert, kToNearestEven);
    expectMatchesDefinition<From, To, std::int32_t>(convert, kTowardZero);
}

/// `convertU8toU16` with the pointers of the other conversions.
Status widenU8toU16(const std::uint8_t* src, std::int32_t srcStep, std::uint16_t* dst,
                    std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertU8toU16(src, srcStep, unaligned(dst), dstStep, w, h);
}

TEST(Conversions, WideningIsExactOnEveryTarget) {
    expectMatchesDefinition<std::uint8_t, float>(convertU8toF32);
    expectMatchesDefinition<std::uint16_t, float>(convertU16toF32);
    expectMatchesDefinition<std::int16_t, float>(convertS16toF32);
    expectMatchesDefinition<std::uint8_t, std::uint16_t>(widenU8toU16);
}

TEST(Conversions, NarrowingIntegersSaturatesOnEveryTarget) {
    expectMatchesDefinition<std::uint16_t, std::uint8_t>(convertU16toU8);
}

TEST(Conversions, FloatsToEightBitsMatchTheDefinitionOnEveryTarget) {
    expectMatchesDefinitionForBothRoundings<float, std::uint8_t>(convertF32toU8);
}

TEST(Conversions, FloatsToSixteenBitsMatchTheDefinitionOnEveryTarget) {
    expectMatchesDefinitionForBothRoundings<float, std::uint16_t>(convertF32toU16);
    expectMatchesDefinitionForBothRoundings<float, std::int16_t>(convertF32toS16);
}

TEST(Conversions, EveryIntegerValueSurvivesTheRoundTrip) {
    std::vector<std::uint16_t> all(65536);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<std::uint16_t>(i);
    }
    std::vector<float> wide(65536);
    std::vector<std::uint16_t> back(65536);
    test::forEachTarget([&] {
        EXPECT_EQ(convertU16toF32(all.data(), 512, wide.data(), 1024, 256, 256), kOk);
        EXPECT_EQ(convertF32toU16(wide.data(), 1024, back.data(), 512, 256, 256, kToNearestEven),
                  kOk);
        EXPECT_EQ(back, all);
    });
}

template <class To>
To convertedOne(Conversion<float, To, std::int32_t> convert, float value, std::int32_t round) {
    To result = 77;
    EXPECT_EQ(convert(&value, 4, &result, 4, 1, 1, round), kOk);
    return result;
}

TEST(Conversions, ValuesThatRoundPastTheLimitGiveTheLimit) {
    EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 255.5f, kToNearestEven), 255);
    EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 255.9f, kTowardZero), 255);
    EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 300.0f, kTowardZero), 255);
    EXPECT_EQ(convertedOne<std::uint16_t>(convertF32toU16, 65535.5f, kToNearestEven), 65535);
    EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, 32767.5f, kToNearestEven), 32767);
    EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, -32769.0f, kTowardZero), -32768);
}

TEST(Conversions, NegativeValuesGiveZeroInUnsignedTargets) {
    for (const std::int32_t round : {kToNearestEven, kTowardZero}) {
        EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, -3.0f, round), 0);
        EXPECT_EQ(convertedOne<std::uint16_t>(convertF32toU16, -1e9f, round), 0);
    }
}

TEST(Conversions, TiesGoToTheEvenNeighbour) {
    EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 0.5f, kToNearestEven), 0);
    EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 1.5f, kToNearestEven), 2);
    EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 2.5f, kToNearestEven), 2);
    EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, -2.5f, kToNearestEven), -2);
    EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, -3.5f, kToNearestEven), -4);
}

TEST(Conversions, RoundingCodeZeroRoundsTowardZero) {
    EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 254.99998f, kTowardZero), 254);
    EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, -1.999f, kTowardZero), -1);
}

TEST(Conversions, UnknownRoundingCodesRoundTowardZero) {
    for (const std::int32_t round : {-1, 2, 3, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 1.75f, round), 1);
        EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, 255.9f, round), 255);
        EXPECT_EQ(convertedOne<std::uint16_t>(convertF32toU16, 65534.99f, round), 65534);
        EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, -1.75f, round), -1);
    }
}

TEST(Conversions, InfinitiesGiveTheEndsOfTheRangeAndNaNGivesZero) {
    for (const std::int32_t round : {kToNearestEven, kTowardZero}) {
        EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, kInfinity, round), 255);
        EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, -kInfinity, round), 0);
        EXPECT_EQ(convertedOne<std::uint8_t>(convertF32toU8, kNaN, round), 0);
        EXPECT_EQ(convertedOne<std::uint16_t>(convertF32toU16, kInfinity, round), 65535);
        EXPECT_EQ(convertedOne<std::uint16_t>(convertF32toU16, -kInfinity, round), 0);
        EXPECT_EQ(convertedOne<std::uint16_t>(convertF32toU16, kNaN, round), 0);
        EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, kInfinity, round), 32767);
        EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, -kInfinity, round), -32768);
        EXPECT_EQ(convertedOne<std::int16_t>(convertF32toS16, kNaN, round), 0);
    }
}

template <class From, class To, class... Round>
void expectArgumentsCheckedInOrder(Conversion<From, To, Round...> convert, Round... round) {
    test::expectChecksInOrder({"conversion", 2, 2, 2, [=](const test::CheckedArguments& g) {
                                   return convert(g.at<From>(0), g.steps[0], g.at<To>(1),
                                                  g.steps[1], g.sizes[0], g.sizes[1], round...);
                               }});
}

TEST(Conversions, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    expectArgumentsCheckedInOrder<std::uint8_t, float>(convertU8toF32);
    expectArgumentsCheckedInOrder<std::uint16_t, float>(convertU16toF32);
    expectArgumentsCheckedInOrder<std::int16_t, float>(convertS16toF32);
    expectArgumentsCheckedInOrder<std::uint8_t, std::uint16_t>(widenU8toU16);
    expectArgumentsCheckedInOrder<std::uint16_t, std::uint8_t>(convertU16toU8);
    for (const std::int32_t round : {kToNearestEven, kTowardZero}) {
        expectArgumentsCheckedInOrder<float, std::uint8_t, std::int32_t>(convertF32toU8, round);
        expectArgumentsCheckedInOrder<float, std::uint16_t, std::int32_t>(convertF32toU16, round);
        expectArgumentsCheckedInOrder<float, std::int16_t, std::int32_t>(convertF32toS16, round);
    }
}

} // namespace
