#include "velimproclib/primitives/filters/Medians.h"

#include "tests/support/BorderedPlane.h"
#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;
using test::BorderedPlane;
using test::forEachTarget;
using test::GuardedPlane;
using Plane = BorderedPlane<std::uint8_t>;

// The least value that more than half of the pixels do not exceed.
std::uint8_t medianOfMask(const Plane& src, int x, int y, int acrossRadius, int downRadius) {
    const auto countUpTo = [&](int level) {
        int count = src.at(x, y) <= level ? 1 : 0;
        for (int d = 1; d <= acrossRadius; ++d) {
            count += (src.at(x - d, y) <= level ? 1 : 0) + (src.at(x + d, y) <= level ? 1 : 0);
        }
        for (int d = 1; d <= downRadius; ++d) {
            count += (src.at(x, y - d) <= level ? 1 : 0) + (src.at(x, y + d) <= level ? 1 : 0);
        }
        return count;
    };
    const int middle = acrossRadius + downRadius;
    int below = -1;
    int level = 255;
    while (level - below > 1) {
        const int half = (below + level) / 2;
        (countUpTo(half) > middle ? level : below) = half;
    }
    return static_cast<std::uint8_t>(level);
}

struct Case {
    decltype(&medianCrossU8) filter;
    std::int32_t mask;
    int acrossRadius;
    int downRadius;
};

const Case kCases[] = {{medianHorizU8, kMask31, 1, 0}, {medianHorizU8, kMask51, 2, 0},
                       {medianVertU8, kMask13, 0, 1},  {medianVertU8, kMask15, 0, 2},
                       {medianCrossU8, kMask33, 1, 1}, {medianCrossU8, kMask55, 2, 2}};

void expectAllEqualTheDefinition(const Plane& src) {
    forEachTarget([&] {
        for (const Case& c : kCases) {
            GuardedPlane<std::uint8_t> dst(src.width(), src.height(), 3, 1);
            ASSERT_EQ(kOk, c.filter(src.data(), src.step(), dst.data(), dst.step(), src.width(),
                                    src.height(), c.mask));
            EXPECT_TRUE(dst.intact() && src.intact());
            for (int y = 0; y < src.height(); ++y) {
                for (int x = 0; x < src.width(); ++x) {
                    ASSERT_EQ(medianOfMask(src, x, y, c.acrossRadius, c.downRadius), dst.at(x, y))
                        << "mask " << c.mask;
                }
            }
        }
    });
}

TEST(Medians, EqualTheDefinitionOnEveryVariant) {
    std::mt19937 random(51);
    std::uniform_int_distribution<int> pixel(0, 255);
    for (const test::PlaneShape& shape : test::planeShapes(random)) {
        Plane src(shape.width, shape.height, 2, shape.extraStep, shape.misalign);
        src.fill([&] { return pixel(random); });
        expectAllEqualTheDefinition(src);
    }
}

TEST(Medians, FindTheMiddleOfEveryPatternOfZerosAndOnes) {
    // A network of minima and maxima that is correct for zeros and ones is correct for all values.
    // Each pattern of the nine pixels has a cross of its own.
    Plane src(512 * 5, 1, 2);
    for (int pattern = 0; pattern < 512; ++pattern) {
        const int x = 5 * pattern + 2;
        const auto bit = [&](int i) { return static_cast<std::uint8_t>((pattern >> i) & 1); };
        for (int d = -2; d <= 2; ++d) {
            src.set(x + d, 0, bit(d + 2));
        }
        src.set(x, -2, bit(5));
        src.set(x, -1, bit(6));
        src.set(x, 1, bit(7));
        src.set(x, 2, bit(8));
    }
    expectAllEqualTheDefinition(src);
}

TEST(Medians, SpeckVanishesAndEdgeStays) {
    Plane src(9, 9, 2);
    for (int y = -2; y < 11; ++y) {
        for (int x = -2; x < 11; ++x) {
            src.set(x, y, x < 6 ? 10 : 100);
        }
    }
    src.set(3, 4, 200);
    for (const std::int32_t mask : {kMask33, kMask55}) {
        GuardedPlane<std::uint8_t> dst(9, 9);
        EXPECT_EQ(medianCrossU8(src.data(), src.step(), dst.data(), dst.step(), 9, 9, mask), kOk);
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 9; ++x) {
                EXPECT_EQ(dst.at(x, y), x < 6 ? 10 : 100) << x << ", " << y << ", mask " << mask;
            }
        }
    }
}

TEST(Medians, EveryFilterChecksPointersThenSizesThenStepsAndWritesNothing) {
    for (const Case& c : kCases) {
        test::expectChecksInOrder({"median", 2, 2, 2, [&c](const test::CheckedArguments& g) {
                                       return c.filter(g.inside<std::uint8_t>(0), g.steps[0],
                                                       g.at<std::uint8_t>(1), g.steps[1],
                                                       g.sizes[0], g.sizes[1], c.mask);
                                   }});
    }
}

TEST(Medians, UnknownMasksAndStepsShorterThanARowAreRefusedAndNothingIsWritten) {
    Plane src(4, 4, 2);
    src.fill([] { return 1; });
    GuardedPlane<std::uint8_t> dst(4, 4);
    dst.fill([] { return 7; });
    const GuardedPlane<std::uint8_t> before = dst;
    for (const Case& c : kCases) {
        EXPECT_EQ(kBadMask, c.filter(src.data(), 4, dst.data(), 4, 4, 4, 0));
        EXPECT_EQ(c.acrossRadius == 0 ? kBadStep : kBadBorderStep,
                  c.filter(src.data(), 4 + 2 * c.acrossRadius - 1, dst.data(), 4, 4, 4, c.mask));
    }
    EXPECT_EQ(kBadMask, medianHorizU8(src.data(), 8, dst.data(), 4, 4, 4, kMask13));
    EXPECT_EQ(kBadMask, medianVertU8(src.data(), 8, dst.data(), 4, 4, 4, kMask31));
    EXPECT_EQ(kBadMask, medianCrossU8(src.data(), 8, dst.data(), 4, 4, 4, kMask51));
    EXPECT_TRUE(dst.sameBits(before));
}

} // namespace
