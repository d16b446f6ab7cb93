#include "velimproclib/primitives/MeanFilter.h"

#include "tests/support/BorderedPlane.h"
#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

namespace vel {
namespace {

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
    std::uniform_int_distribution<int> side(1, 67);
    for (int i = 0; i < 16; ++i) {
        const int w = i == 0 ? 1 : i == 1 ? 613 : side(random);
        const int h = i == 0 ? 1 : i == 1 ? 3 : side(random);
        Plane src(w, h, 2, w % 9, h % 6);
        src.fill([&] { return i % 3 == 2 ? 255 : pixel(random); });
        forEachTarget([&] {
            for (const int radius : {1, 2}) {
                GuardedPlane<std::uint8_t> dst(w, h, 3, 1);
                ASSERT_EQ(kOk, meanFilterU8(src.data(), src.step(), dst.data(), dst.step(), w, h,
                                            radius == 1 ? kMask33 : kMask55));
                EXPECT_TRUE(dst.intact());
                for (int y = 0; y < h; ++y) {
                    for (int x = 0; x < w; ++x) {
                        ASSERT_EQ(mean(src, x, y, radius), dst.at(x, y));
                    }
                }
            }
        });
    }
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

TEST(MeanFilter, RefusalsComeInOrderAndWriteNothing) {
    Plane src(4, 4, 2);
    GuardedPlane<std::uint8_t> dst(4, 4);
    dst.fill([] { return 7; });
    EXPECT_EQ(kNullPointer, meanFilterU8(src.data(), 0, nullptr, 4, 0, 4, 0));
    EXPECT_EQ(kBadSize, meanFilterU8(src.data(), 0, dst.data(), 4, 0, 4, 0));
    EXPECT_EQ(kBadStep, meanFilterU8(src.data(), 0, dst.data(), 4, 4, 4, 0));
    EXPECT_EQ(kBadMask, meanFilterU8(src.data(), 1, dst.data(), 4, 4, 4, kMask31));
    EXPECT_EQ(kBadBorderStep, meanFilterU8(src.data(), 5, dst.data(), 4, 4, 4, kMask33));
    EXPECT_EQ(kBadBorderStep, meanFilterU8(src.data(), 7, dst.data(), 4, 4, 4, kMask55));
    EXPECT_EQ(7, dst.at(0, 0));
}

} // namespace
} // namespace vel
