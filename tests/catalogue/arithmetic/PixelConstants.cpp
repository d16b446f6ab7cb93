#include "velimproclib/catalogue/arithmetic/PixelConstants.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace vel;

/// `routine(pixels, step, w, h)` against `reference(value, constant)`, with one constant for each
/// element of a pixel.
template <class T, std::size_t N, class Routine, class Reference>
void expectCombines(const std::array<T, N>& constants, const Routine& routine,
                    const Reference& reference) {
    std::mt19937 random(2);
    for (const test::PlaneShape& shape : test::planeShapes(random)) {
        auto plane = shape.plane<T>(static_cast<int>(N));
        plane.fill([&] { return test::randomPixel<T>(random); });
        const auto expected = test::mapped(plane, [&](T v, int x, int) {
            return reference(v, constants[static_cast<std::size_t>(x) % N]);
        });
        ASSERT_EQ(routine(plane.data(), plane.step(), shape.width, shape.height), kOk);
        for (int y = 0; y < shape.height; ++y) {
            for (int x = 0; x < plane.width(); ++x) {
                ASSERT_TRUE(test::sameFloat(static_cast<float>(plane.at(x, y)),
                                            static_cast<float>(expected.at(x, y))));
            }
        }
        EXPECT_TRUE(plane.intact());
    }
}

constexpr std::array kFactors{0.25f, -3.1f, 1000.7f};
constexpr std::array<std::uint16_t, 3> kLevels{32768, 100, 60000};

std::uint16_t lesser(std::uint16_t v, std::uint16_t level) {
    return std::min(v, level);
}

TEST(PixelConstants, SumsAndProductsUseTheConstantOfTheirChannel) {
    expectCombines(
        kFactors,
        [](float* p, auto step, auto w, auto h) {
            return addConstInPlaceC3F32(kFactors.data(), p, step, w, h);
        },
        [](float v, float c) { return v + c; });
    expectCombines(
        kFactors,
        [](float* p, auto step, auto w, auto h) {
            return mulConstInPlaceC3F32(kFactors.data(), p, step, w, h);
        },
        [](float v, float c) { return v * c; });
}

TEST(PixelConstants, ClampsUseTheLevelOfTheirElement) {
    expectCombines(
        std::array<std::uint16_t, 1>{32768},
        [](std::uint16_t* p, auto step, auto w, auto h) {
            return clampAboveU16(p, step, w, h, 32768);
        },
        lesser);
    expectCombines(
        kLevels,
        [](std::uint16_t* p, auto step, auto w, auto h) {
            return clampAboveC3U16(p, step, w, h, kLevels.data());
        },
        lesser);
}

TEST(PixelConstants, FourChannelClampLeavesElementZeroAlone) {
    expectCombines(
        std::array<std::uint16_t, 4>{65535, 32768, 100, 60000},
        [](std::uint16_t* p, auto step, auto w, auto h) {
            return clampAboveC4U16(p, step, w, h, kLevels.data());
        },
        lesser);
}

TEST(PixelConstants, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    const std::vector<test::CheckedRoutine> routines{
        {"addConstInPlaceC3F32", 2, 2, 1,
         [](const Arguments& g) {
             return addConstInPlaceC3F32(g.at<float>(0), g.at<float>(1), g.steps[0], g.sizes[0],
                                         g.sizes[1]);
         }},
        {"mulConstInPlaceC3F32", 2, 2, 1,
         [](const Arguments& g) {
             return mulConstInPlaceC3F32(g.at<float>(0), g.at<float>(1), g.steps[0], g.sizes[0],
                                         g.sizes[1]);
         }},
        {"clampAboveU16", 1, 2, 1,
         [](const Arguments& g) {
             return clampAboveU16(g.at<std::uint16_t>(0), g.steps[0], g.sizes[0], g.sizes[1], 3);
         }},
        {"clampAboveC3U16", 2, 2, 1,
         [](const Arguments& g) {
             return clampAboveC3U16(g.at<std::uint16_t>(0), g.steps[0], g.sizes[0], g.sizes[1],
                                    g.at<std::uint16_t>(1));
         }},
        {"clampAboveC4U16", 2, 2, 1, [](const Arguments& g) {
             return clampAboveC4U16(g.at<std::uint16_t>(0), g.steps[0], g.sizes[0], g.sizes[1],
                                    g.at<std::uint16_t>(1));
         }}};
    for (const test::CheckedRoutine& routine : routines) {
        test::expectChecksInOrder(routine);
    }
}

} // namespace
