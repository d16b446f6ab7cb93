#include "velimproclib/primitives/arithmetic/ScaledU16.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::GuardedPlane;
using test::PlaneShape;

const std::vector<std::int32_t> kScales{0,   1,   2,   7,   15,        16,       17, 18,
                                        19,  31,  32,  64,  -1,        -2,       -7, -15,
                                        -16, -17, -31, -32, INT32_MAX, INT32_MIN};

/// The definition in 64 bits. All scales beyond 40 give the same results for 17-bit values.
std::uint16_t scaled(std::uint64_t v, std::int32_t scale) {
    const int s = std::clamp(scale, -40, 40);
    std::uint64_t result = v;
    if (s < 0) {
        result = v << -s;
    } else if (s > 0) {
        result = (v + (std::uint64_t{1} << (s - 1)) - 1 + ((v >> s) & 1)) >> s;
    }
    return static_cast<std::uint16_t>(std::min<std::uint64_t>(result, 65535));
}

std::uint16_t addedOne(std::uint16_t v, std::uint16_t value, std::int32_t scale) {
    EXPECT_EQ(addConstScaledU16(value, unaligned(&v), 2, 1, 1, scale), kOk);
    return v;
}

std::uint16_t subtractedOne(std::uint16_t v, std::uint16_t value, std::int32_t scale) {
    std::uint16_t result = 0;
    EXPECT_EQ(subConstScaledU16(unaligned(&v), 2, value, unaligned(&result), 2, 1, 1, scale), kOk);
    return result;
}

TEST(ScaledU16, LevelPlusOneTimes128EndsAt32768) {
    EXPECT_EQ(addedOne(255, 1, -7), 32768);
    EXPECT_EQ(addedOne(0, 1, -7), 128);
}

TEST(ScaledU16, ProductsBeyondTheRangeSaturate) {
    EXPECT_EQ(addedOne(65535, 1, -7), 65535);
    EXPECT_EQ(addedOne(65535, 65535, -16), 65535);
    EXPECT_EQ(addedOne(0, 0, INT32_MIN), 0);
}

TEST(ScaledU16, TheSumDoesNotSaturateBeforeTheDivision) {
    EXPECT_EQ(addedOne(65535, 1, 1), 32768);
    EXPECT_EQ(addedOne(65535, 65535, 1), 65535);
}

TEST(ScaledU16, TiesOfTheDivisionGoToTheEvenLevel) {
    EXPECT_EQ(subtractedOne(192, 128, 7), 0);
    EXPECT_EQ(subtractedOne(193, 128, 7), 1);
    EXPECT_EQ(subtractedOne(320, 128, 7), 2);
    EXPECT_EQ(subtractedOne(448, 128, 7), 2);
}

TEST(ScaledU16, DifferencesBelowZeroAreZero) {
    EXPECT_EQ(subtractedOne(127, 128, 0), 0);
    EXPECT_EQ(subtractedOne(0, 65535, -7), 0);
}

TEST(ScaledU16, EveryValueFollowsTheDefinitionForEveryScaleOnEveryTarget) {
    std::vector<std::uint16_t> all(65536);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<std::uint16_t>(i);
    }
    for (const std::int32_t scale : kScales) {
        for (const auto value : std::initializer_list<std::uint16_t>{0, 1, 128, 65535}) {
            test::forEachTarget([&] {
                auto sums = all;
                std::vector<std::uint16_t> differences(all.size());
                ASSERT_EQ(addConstScaledU16(value, unaligned(sums.data()), 512, 256, 256, scale),
                          kOk);
                ASSERT_EQ(subConstScaledU16(unaligned(all.data()), 512, value,
                                            unaligned(differences.data()), 512, 256, 256, scale),
                          kOk);
                for (std::size_t v = 0; v < all.size(); ++v) {
                    ASSERT_EQ(sums[v], scaled(v + value, scale)) << v << " scale " << scale;
                    ASSERT_EQ(differences[v], scaled(v > value ? v - value : 0, scale))
                        << v << " scale " << scale;
                }
            });
        }
    }
}

TEST(ScaledU16, EveryShapeFollowsTheDefinitionOnEveryTarget) {
    std::mt19937 random(1);
    for (PlaneShape shape : test::planeShapes(random)) {
        auto plane = shape.plane<std::uint16_t>();
        plane.fill([&] { return test::randomPixel<std::uint16_t>(random); });
        const auto value = static_cast<std::uint16_t>(random() % 1000);
        const std::int32_t scale = static_cast<std::int32_t>(random() % 19) - 9;
        const auto sums = test::mapped(plane, [&](std::uint16_t v, int, int) {
            return scaled(std::uint64_t{v} + value, scale);
        });
        const auto differences = test::mapped(plane, [&](std::uint16_t v, int, int) {
            return scaled(v > value ? std::uint64_t{v} - value : 0, scale);
        });
        shape.extraStep += 5;
        test::forEachTarget([&] {
            auto inPlace = plane;
            ASSERT_EQ(addConstScaledU16(value, unaligned(inPlace.data()), inPlace.step(),
                                        shape.width, shape.height, scale),
                      kOk);
            EXPECT_TRUE(inPlace.sameBits(sums));
            EXPECT_TRUE(inPlace.intact());
            auto apart = shape.plane<std::uint16_t>();
            ASSERT_EQ(subConstScaledU16(unaligned(plane.data()), plane.step(), value,
                                        unaligned(apart.data()), apart.step(), shape.width,
                                        shape.height, scale),
                      kOk);
            EXPECT_TRUE(apart.sameBits(differences));
            EXPECT_TRUE(apart.intact());
            auto same = plane;
            ASSERT_EQ(subConstScaledU16(unaligned(same.data()), same.step(), value,
                                        unaligned(same.data()), same.step(), shape.width,
                                        shape.height, scale),
                      kOk);
            EXPECT_TRUE(same.sameBits(differences));
        });
    }
}

TEST(ScaledU16, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    test::expectChecksInOrder({"addConstScaledU16", 1, 2, 1, [](const Arguments& g) {
                                   return addConstScaledU16(1, g.at<Unaligned<std::uint16_t>>(0),
                                                            g.steps[0], g.sizes[0], g.sizes[1], 0);
                               }});
    test::expectChecksInOrder({"subConstScaledU16", 2, 2, 2, [](const Arguments& g) {
                                   return subConstScaledU16(g.at<Unaligned<std::uint16_t>>(0),
                                                            g.steps[0], 1,
                                                            g.at<Unaligned<std::uint16_t>>(1),
                                                            g.steps[1], g.sizes[0], g.sizes[1], 0);
                               }});
}

} // namespace
