#include "velimproclib/catalogue/pixels/ColorConversions.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"
#include "velimproclib/primitives/pixels/Conversions.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;
using test::GuardedPlane;

template <class From, class To, class... Round>
using Conversion = Status (*)(const From*, std::int32_t, To*, std::int32_t, std::int32_t,
                              std::int32_t, Round...) noexcept;

/// `convertPixels` of w pixels gives what `convertElements` of 3 w elements gives.
template <class From, class To, class... Round>
void expectConvertsEveryElement(Conversion<From, To, Round...> convertPixels,
                                Conversion<From, To, Round...> convertElements, Round... round) {
    std::mt19937 random(4711);
    for (const test::PlaneShape& shape : test::planeShapes(random)) {
        auto src = shape.plane<From>(3);
        src.fill([&] { return test::randomPixel<From>(random); });
        GuardedPlane<To> expected(src.width(), shape.height, shape.extraStep / 2,
                                  shape.misalign / 3);
        GuardedPlane<To> dst = expected;
        EXPECT_EQ(convertElements(src.data(), src.step(), expected.data(), expected.step(),
                                  src.width(), shape.height, round...),
                  kOk);
        EXPECT_EQ(convertPixels(src.data(), src.step(), dst.data(), dst.step(), shape.width,
                                shape.height, round...),
                  kOk);
        EXPECT_TRUE(dst.sameBits(expected)) << shape.width << " by " << shape.height;
        EXPECT_TRUE(dst.intact());
    }
    test::expectChecksInOrder({"conversion", 2, 2, 2, [=](const test::CheckedArguments& g) {
                                   return convertPixels(g.at<From>(0), g.steps[0], g.at<To>(1),
                                                        g.steps[1], g.sizes[0], g.sizes[1],
                                                        round...);
                               }});
}

TEST(ColorConversions, EveryElementIsConvertedAsInAPlaneAndArgumentsAreCheckedInOrder) {
    expectConvertsEveryElement<std::uint8_t, float>(convertU8toF32C3, convertU8toF32);
    expectConvertsEveryElement<std::uint16_t, float>(convertU16toF32C3, convertU16toF32);
    for (const std::int32_t round : {kToNearestEven, kTowardZero}) {
        expectConvertsEveryElement<float, std::uint8_t>(convertF32toU8C3, convertF32toU8, round);
        expectConvertsEveryElement<float, std::uint16_t>(convertF32toU16C3, convertF32toU16, round);
    }
}

} // namespace
