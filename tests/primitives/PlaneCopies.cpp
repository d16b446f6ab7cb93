#include "velimproclib/primitives/PlaneCopies.h"

#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"

#include <bit>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;
using test::GuardedPlane;

struct Case {
    int width;
    int height;
    GuardedPlane<float> src;
    GuardedPlane<float> dst;
    GuardedPlane<std::uint8_t> mask;
};

/// Planes of any bit patterns, NaN included, with odd steps and starts; half the mask is 0.
template <class Check>
void forEachCase(Check&& check) {
    std::mt19937 random(21);
    for (int i = 0; i < 80; ++i) {
        const int width = i == 0 ? 1031 : static_cast<int>(random() % 67) + 1;
        const int height = static_cast<int>(random() % 5) + 1;
        const int padding = i % 4 == 0 ? 0 : static_cast<int>(random() % 9);
        Case c{width, height, GuardedPlane<float>(width, height, padding, i % 7),
               GuardedPlane<float>(width, height, padding / 2, i % 5),
               GuardedPlane<std::uint8_t>(width, height, padding / 3, i % 3)};
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
    const float a[4] = {1, 2, 3, 4};
    float b[4] = {5, 6, 7, 8};
    const std::uint8_t m[4] = {1, 1, 1, 1};
    EXPECT_EQ(copyPlaneF32(nullptr, 0, b, 0, 0, 0), kNullPointer);
    EXPECT_EQ(copyPlaneF32(a, 0, nullptr, 0, 0, 0), kNullPointer);
    EXPECT_EQ(copyPlaneF32(a, 0, b, 0, 0, 1), kBadSize);
    EXPECT_EQ(copyPlaneF32(a, 0, b, 0, 1, -1), kBadSize);
    EXPECT_EQ(copyPlaneF32(a, 0, b, 16, 1, 1), kBadStep);
    EXPECT_EQ(copyPlaneF32(a, 16, b, -16, 1, 1), kBadStep);
    EXPECT_EQ(setPlaneF32(1, nullptr, 0, 0, 0), kNullPointer);
    EXPECT_EQ(setPlaneF32(1, b, 0, 0, 1), kBadSize);
    EXPECT_EQ(setPlaneF32(1, b, 0, 1, 0), kBadSize);
    EXPECT_EQ(setPlaneF32(1, b, 0, 1, 1), kBadStep);
    EXPECT_EQ(copyMaskedF32(nullptr, 0, b, 0, 0, 0, m, 0), kNullPointer);
    EXPECT_EQ(copyMaskedF32(a, 0, nullptr, 0, 0, 0, m, 0), kNullPointer);
    EXPECT_EQ(copyMaskedF32(a, 0, b, 0, 0, 0, nullptr, 0), kNullPointer);
    EXPECT_EQ(copyMaskedF32(a, 0, b, 0, 0, 1, m, 0), kBadSize);
    EXPECT_EQ(copyMaskedF32(a, 0, b, 0, 1, 0, m, 0), kBadSize);
    EXPECT_EQ(copyMaskedF32(a, 0, b, 16, 1, 1, m, 4), kBadStep);
    EXPECT_EQ(copyMaskedF32(a, 16, b, 0, 1, 1, m, 4), kBadStep);
    EXPECT_EQ(copyMaskedF32(a, 16, b, 16, 1, 1, m, 0), kBadStep);
    EXPECT_EQ(b[0], 5.0f);
}

} // namespace
