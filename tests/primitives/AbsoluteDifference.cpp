#include "velimproclib/primitives/AbsoluteDifference.h"

#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>

namespace vel {
namespace {

using test::forEachTarget;
using test::GuardedPlane;
using Plane = GuardedPlane<std::uint8_t>;

void expectDifference(const Plane& a, const Plane& b, const Plane& dst) {
    EXPECT_TRUE(dst.intact());
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            ASSERT_EQ(std::abs(a.at(x, y) - b.at(x, y)), dst.at(x, y));
        }
    }
}

TEST(AbsoluteDifference, EqualsTheDefinitionOnEveryVariantAlsoInPlace) {
    std::mt19937 random(71);
    std::uniform_int_distribution<int> pixel(0, 255);
    std::uniform_int_distribution<int> side(1, 67);
    for (int i = 0; i < 20; ++i) {
        const int w = i == 0 ? 1 : i == 1 ? 1013 : side(random);
        const int h = i == 0 ? 1 : i == 1 ? 3 : side(random);
        const int extra = i % 2 == 0 ? 0 : 5;
        Plane a(w, h, extra, i % 5);
        Plane b(w, h, extra, i % 3);
        a.fill([&] { return pixel(random); });
        b.fill([&] { return pixel(random); });
        forEachTarget([&] {
            Plane dst(w, h, extra, 1);
            ASSERT_EQ(kOk, absDiffU8(a.data(), a.step(), b.data(), b.step(), dst.data(), dst.step(),
                                     w, h));
            expectDifference(a, b, dst);
            Plane inPlace = b;
            ASSERT_EQ(kOk, absDiffU8(a.data(), a.step(), inPlace.data(), inPlace.step(),
                                     inPlace.data(), inPlace.step(), w, h));
            expectDifference(a, b, inPlace);
        });
    }
}

TEST(AbsoluteDifference, RefusalsComeInOrderAndWriteNothing) {
    Plane a(4, 4);
    Plane dst(4, 4);
    dst.fill([] { return 7; });
    EXPECT_EQ(kNullPointer, absDiffU8(a.data(), 0, nullptr, 4, dst.data(), 4, 0, 4));
    EXPECT_EQ(kBadSize, absDiffU8(a.data(), 0, a.data(), 4, dst.data(), 4, 0, 4));
    EXPECT_EQ(kBadStep, absDiffU8(a.data(), 4, a.data(), 0, dst.data(), 4, 4, 4));
    EXPECT_EQ(7, dst.at(0, 0));
}

} // namespace
} // namespace vel
