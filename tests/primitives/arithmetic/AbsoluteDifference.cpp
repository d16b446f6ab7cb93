#include "velimproclib/primitives/arithmetic/AbsoluteDifference.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;
using test::forEachTarget;
using test::PlaneShape;
using Plane = test::GuardedPlane<std::uint8_t>;

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
    for (PlaneShape shape : test::planeShapes(random)) {
        auto a = shape.plane<std::uint8_t>();
        shape.misalign /= 2;
        auto b = shape.plane<std::uint8_t>();
        a.fill([&] { return pixel(random); });
        b.fill([&] { return pixel(random); });
        const auto difference = [&](const Plane& left, const Plane& right, Plane& dst) {
            return absDiffU8(left.data(), left.step(), right.data(), right.step(), dst.data(),
                             dst.step(), shape.width, shape.height);
        };
        forEachTarget([&] {
            auto apart = shape.plane<std::uint8_t>();
            ASSERT_EQ(kOk, difference(a, b, apart));
            expectDifference(a, b, apart);
            Plane overA = a;
            ASSERT_EQ(kOk, difference(overA, b, overA));
            expectDifference(a, b, overA);
            Plane overB = b;
            ASSERT_EQ(kOk, difference(a, overB, overB));
            expectDifference(a, b, overB);
        });
    }
}

TEST(AbsoluteDifference, ChecksPointersThenSizesThenStepsAndWritesNothing) {
    test::expectChecksInOrder(
        {"absDiffU8", 3, 2, 3, [](const test::CheckedArguments& g) {
             return absDiffU8(g.at<std::uint8_t>(0), g.steps[0], g.at<std::uint8_t>(1), g.steps[1],
                              g.at<std::uint8_t>(2), g.steps[2], g.sizes[0], g.sizes[1]);
         }});
}

} // namespace
