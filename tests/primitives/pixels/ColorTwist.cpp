#include "velimproclib/primitives/pixels/ColorTwist.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::GuardedPlane;
using test::PlaneShape;

TEST(ColorTwist, EveryPlaneIsItsRowSummedFromLeftToRightOnEveryTarget) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> plain(-2.0f, 2.0f);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        float coef[3][4];
        for (auto& row : coef) {
            for (float& c : row) {
                c = plain(random);
            }
        }
        std::vector<GuardedPlane<float>> planes(3, shape.plane<float>());
        for (auto& plane : planes) {
            plane.fill([&] {
                return random() % 4 == 0 ? test::randomPixel<float>(random) : plain(random);
            });
        }
        auto expected = planes;
        for (std::size_t r = 0; r < 3; ++r) {
            expected[r] = test::mapped(planes[r], [&](float, int x, int y) {
                float sum = coef[r][0] * planes[0].at(x, y);
                sum += coef[r][1] * planes[1].at(x, y);
                sum += coef[r][2] * planes[2].at(x, y);
                sum += coef[r][3];
                return sum;
            });
        }
        test::forEachTarget([&] {
            auto twisted = planes;
            float* const pointers[3] = {twisted[0].data(), twisted[1].data(), twisted[2].data()};
            ASSERT_EQ(colorTwistP3F32(pointers, twisted[0].step(), shape.width, shape.height, coef),
                      kOk);
            for (std::size_t r = 0; r < 3; ++r) {
                EXPECT_TRUE(test::sameFloats(twisted[r], expected[r])) << "plane " << r;
                EXPECT_TRUE(twisted[r].intact());
            }
        });
    }
}

TEST(ColorTwist, ConstantIsAddedLast) {
    // A sum that starts with 1e8 rounds the small terms away.
    const float coef[3][4] = {{1, 1, 1, 1e8f}, {0, 0, 0, -3}, {1, -1, 0, 0}};
    test::forEachTarget([&] {
        float p0 = 3.0f;
        float p1 = 3.0f;
        float p2 = 3.0f;
        float* const planes[3] = {&p0, &p1, &p2};
        EXPECT_EQ(colorTwistP3F32(planes, 4, 1, 1, coef), kOk);
        EXPECT_EQ(p0, 100000008.0f);
        EXPECT_EQ(p1, -3.0f);
        EXPECT_EQ(p2, 0.0f);
    });
}

TEST(ColorTwist, ChecksPointersThenSizesThenStepsAndWritesNothing) {
    using Coefficients = const float(*)[4];
    test::expectChecksInOrder(
        {"colorTwistP3F32", 4, 2, 1, [](const test::CheckedArguments& g) {
             float* const planes[3] = {g.at<float>(0), g.at<float>(1), g.at<float>(2)};
             const auto* coef = static_cast<Coefficients>(static_cast<void*>(g.at<float>(3)));
             return colorTwistP3F32(planes, g.steps[0], g.sizes[0], g.sizes[1], coef);
         }});
    const float coef[3][4] = {};
    EXPECT_EQ(colorTwistP3F32(nullptr, 0, 0, 0, coef), kNullPointer);
}

} // namespace
