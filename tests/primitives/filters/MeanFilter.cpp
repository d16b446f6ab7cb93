#include "velimproclib/primitives/filters/MeanFilter.h"

#include "tests/support/BorderedPlane.h"
#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

namespace {

using namespace vel;
using test::BorderedPlane;
using test::forEachTarget;
using test::GuardedPlane;
using Plane = BorderedPlane<std::uint8_t>;

int mean(const Plane& src, int x, int y, int radius) {
    int sum = 0;
    for (int dy = -radius; dy <= radius; ++dy) {
        for (int dx = -radius; dx <= radius; ++dx) {
            sum += src.at(x + dx, y + dy);
        }
    }
    return radius == 1 ? ((sum + 5) * 455) >> 12 : ((sum + 13) * 10485) >> 18;
}

TEST(MeanFilter, EqualsTheFormulaOnEveryVariant) {
    std::mt19937 random(61);
    std::uniform_int_distribution<int> pixel(0, 255);
    for (const test::PlaneShape& shape : test::planeShapes(random)) {
        Plane src(shape.width, shape.height, 2, shape.extraStep, shape.misalign);
        src.fill([&] { return shape.width % 3 == 2 ? 255 : pixel(random); });
        forEachTarget([&] {
            for (const int radius : {1, 2}) {
                GuardedPlane<std::uint8_t> dst(shape.width, shape.height, 3, 1);
                ASSERT_EQ(kOk,
                          meanFilterU8(src.data(), src.step(), dst.data(), dst.step(), shape.width,
                                       shape.height, radius == 1 ? kMask33 : kMask55));
                EXPECT_TRUE(dst.intact());
                for (int y = 0; y < shape.height; ++y) {
                    for (int x = 0; x < shape.width; ++x) {
                        ASSERT_EQ(mean(src, x, y, radius), dst.at(x, y));
                    }
                }
            }
        });
    }
}

/// The filter's results for neighbourhoods side by side, one for every possible sum of their
/// pixels.
std::vector<int> meansOfEverySum(int side, std::int32_t mask) {
    const int sums = 255 * side * side + 1;
    const int radius = side / 2;
    Plane src(side * sums, 1, radius);
    for (int sum = 0; sum < sums; ++sum) {
        int rest = sum;
        for (int y = -radius; y <= radius; ++y) {
            for (int x = 0; x < side; ++x) {
                const int pixel = std::min(rest, 255);
                src.set(side * sum + x, y, static_cast<std::uint8_t>(pixel));
                rest -= pixel;
            }
        }
    }
    GuardedPlane<std::uint8_t> dst(side * sums, 1);
    EXPECT_EQ(kOk,
              meanFilterU8(src.data(), src.step(), dst.data(), dst.step(), side * sums, 1, mask));
    std::vector<int> means;
    for (int sum = 0; sum < sums; ++sum) {
        means.push_back(dst.at(side * sum + radius, 0));
    }
    return means;
}

TEST(MeanFilter, IsTheMeanRoundedToNearestForEverySumOnEveryVariant) {
    forEachTarget([] {
        for (const auto& [side, mask] : {std::pair{3, kMask33}, {5, kMask55}}) {
            const std::vector<int> means = meansOfEverySum(side, mask);
            const int pixels = side * side;
            for (std::size_t sum = 0; sum < means.size(); ++sum) {
                // With an odd number of pixels there are no ties.
                ASSERT_EQ((2 * static_cast<int>(sum) + pixels) / (2 * pixels), means[sum]) << sum;
            }
        }
    });
}

TEST(MeanFilter, FlatPlanesStayFlat) {
    for (const int level : {0, 1, 100, 254, 255}) {
        Plane src(5, 1, 2);
        src.fill([&] { return level; });
        for (const std::int32_t mask : {kMask33, kMask55}) {
            GuardedPlane<std::uint8_t> dst(5, 1);
            meanFilterU8(src.data(), src.step(), dst.data(), dst.step(), 5, 1, mask);
            EXPECT_EQ(level, dst.at(2, 0)) << mask;
        }
    }
}

TEST(MeanFilter, ChecksPointersThenSizesThenStepsAndWritesNothing) {
    for (const std::int32_t mask : {kMask33, kMask55}) {
        test::expectChecksInOrder(
            {"meanFilterU8", 2, 2, 2, [mask](const test::CheckedArguments& g) {
                 return meanFilterU8(g.inside<std::uint8_t>(0), g.steps[0], g.at<std::uint8_t>(1),
                                     g.steps[1], g.sizes[0], g.sizes[1], mask);
             }});
    }
}

TEST(MeanFilter, UnknownMasksAndStepsShorterThanARowWithItsBorderAreRefusedAndNothingIsWritten) {
    Plane src(4, 4, 2);
    src.fill([] { return 1; });
    GuardedPlane<std::uint8_t> dst(4, 4);
    dst.fill([] { return 7; });
    const GuardedPlane<std::uint8_t> before = dst;
    EXPECT_EQ(kBadMask, meanFilterU8(src.data(), 1, dst.data(), 4, 4, 4, kMask31));
    EXPECT_EQ(kBadBorderStep, meanFilterU8(src.data(), 5, dst.data(), 4, 4, 4, kMask33));
    EXPECT_EQ(kBadBorderStep, meanFilterU8(src.data(), 7, dst.data(), 4, 4, 4, kMask55));
    EXPECT_TRUE(dst.sameBits(before));
}

} // namespace
