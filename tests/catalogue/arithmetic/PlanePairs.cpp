#include "velimproclib/catalogue/arithmetic/PlanePairs.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;

using Combine = Status (*)(const float*, std::int32_t, const float*, std::int32_t, float*,
                           std::int32_t, std::int32_t, std::int32_t) noexcept;

template <class Reference>
void expectOneOperationPerPixel(Combine combine, const Reference& reference) {
    std::mt19937 random(2);
    for (test::PlaneShape shape : test::planeShapes(random)) {
        auto a = shape.plane<float>();
        a.fill([&] { return test::randomPixel<float>(random); });
        shape.extraStep /= 2;
        auto b = shape.plane<float>();
        b.fill([&] { return test::randomPixel<float>(random); });
        const auto expected =
            test::mapped(b, [&](float v, int x, int y) { return reference(a.at(x, y), v); });
        auto apart = shape.plane<float>();
        ASSERT_EQ(combine(a.data(), a.step(), b.data(), b.step(), apart.data(), apart.step(),
                          shape.width, shape.height),
                  kOk);
        EXPECT_TRUE(test::sameFloats(apart, expected)) << shape.width << " by " << shape.height;
        EXPECT_TRUE(apart.intact());
        ASSERT_EQ(combine(a.data(), a.step(), b.data(), b.step(), b.data(), b.step(), shape.width,
                          shape.height),
                  kOk);
        EXPECT_TRUE(test::sameFloats(b, expected)) << "into a source";
    }
    test::expectChecksInOrder({"planes", 3, 2, 3, [combine](const test::CheckedArguments& g) {
                                   return combine(g.at<float>(0), g.steps[0], g.at<float>(1),
                                                  g.steps[1], g.at<float>(2), g.steps[2],
                                                  g.sizes[0], g.sizes[1]);
                               }});
}

TEST(PlanePairs, SumIsOneAdditionPerPixelAndArgumentsAreCheckedInOrder) {
    expectOneOperationPerPixel(addPlanesF32, [](float a, float b) { return a + b; });
}

TEST(PlanePairs, ProductIsOneMultiplicationPerPixelAndArgumentsAreCheckedInOrder) {
    expectOneOperationPerPixel(mulPlanesF32, [](float a, float b) { return a * b; });
}

} // namespace
