#include "velimproclib/primitives/pixels/PlaneCopies.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;
using test::GuardedPlane;
using test::PlaneShape;

struct Case {
    int width;
    int height;
    GuardedPlane<float> src;
    GuardedPlane<float> dst;
    GuardedPlane<std::uint8_t> mask;
};

/// Planes of any bit patterns, NaN included; half the mask is 0.
template <class Check>
void forEachCase(Check&& check) {
    std::mt19937 random(21);
    for (PlaneShape shape : test::planeShapes(random)) {
        const auto src = shape.plane<float>();
        shape.extraStep /= 2;
        const auto dst = shape.plane<float>();
        shape.extraStep /= 2;
        Case c{shape.width, shape.height, src, dst, shape.plane<std::uint8_t>()};
        const auto anyFloat = [&] {
            return std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        };
        c.src.fill(anyFloat);
        c.dst.fill(anyFloat);
        c.mask.fill([&] { return random() % 2 == 0 ? 0u : random() % 255 + 1; });
        check(c);
    }
}

TEST(PlaneCopies, CopyKeepsEveryBit) {
    forEachCase([](const Case& c) {
        GuardedPlane<float> dst = c.dst;
        ASSERT_EQ(
            copyPlaneF32(c.src.data(), c.src.step(), dst.data(), dst.step(), c.width, c.height),
            kOk);
        EXPECT_TRUE(dst.sameBits(c.src));
        EXPECT_TRUE(dst.intact());
    });
}

TEST(PlaneCopies, SetFillsTheRegionOnly) {
    forEachCase([](const Case& c) {
        GuardedPlane<float> expected = c.dst;
        expected.fill([] { return -2.5f; });
        test::forEachTarget([&] {
            GuardedPlane<float> dst = c.dst;
            ASSERT_EQ(setPlaneF32(-2.5f, dst.data(), dst.step(), c.width, c.height), kOk);
            EXPECT_TRUE(dst.sameBits(expected));
            EXPECT_TRUE(dst.intact());
        });
    });
}

TEST(PlaneCopies, MaskedCopyKeepsThePixelsWhoseMaskIsZero) {
    forEachCase([](const Case& c) {
        GuardedPlane<float> expected = c.dst;
        for (int y = 0; y < c.height; ++y) {
            for (int x = 0; x < c.width; ++x) {
                if (c.mask.at(x, y) != 0) {
                    expected.set(x, y, c.src.at(x, y));
                }
            }
        }
        test::forEachTarget([&] {
            GuardedPlane<float> dst = c.dst;
            ASSERT_EQ(copyMaskedF32(c.src.data(), c.src.step(), dst.data(), dst.step(), c.width,
                                    c.height, c.mask.data(), c.mask.step()),
                      kOk);
            EXPECT_TRUE(dst.sameBits(expected));
            EXPECT_TRUE(dst.intact());
        });
    });
}

TEST(PlaneCopies, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    test::expectChecksInOrder({"copyPlaneF32", 2, 2, 2, [](const Arguments& g) {
                                   return copyPlaneF32(g.at<float>(0), g.steps[0], g.at<float>(1),
                                                       g.steps[1], g.sizes[0], g.sizes[1]);
                               }});
    test::expectChecksInOrder({"setPlaneF32", 1, 2, 1, [](const Arguments& g) {
                                   return setPlaneF32(1.0f, g.at<float>(0), g.steps[0], g.sizes[0],
                                                      g.sizes[1]);
                               }});
    test::expectChecksInOrder({"copyMaskedF32", 3, 2, 3, [](const Arguments& g) {
                                   return copyMaskedF32(g.at<float>(0), g.steps[0], g.at<float>(1),
                                                        g.steps[1], g.sizes[0], g.sizes[1],
                                                        g.at<std::uint8_t>(2), g.steps[2]);
                               }});
}

} // namespace
