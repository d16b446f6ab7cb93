#include "velimproclib/primitives/filters/Morphology.h"

#include "tests/support/BorderedPlane.h"
#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/NothrowNewFails.h"
#include "tests/support/PlaneShapes.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::BorderedPlane;
using test::forEachTarget;
using test::GuardedPlane;
using test::PlaneShape;

// The first of equal values in reading order: rows from top to bottom, each from left to right.
template <class T, class Beats>
T extreme(const BorderedPlane<T>& src, int x, int y, Beats beats) {
    const auto alongRow = [&](int dy) {
        T best = src.at(x - 1, y + dy);
        for (int dx = 0; dx <= 1; ++dx) {
            if (beats(src.at(x + dx, y + dy), best)) {
                best = src.at(x + dx, y + dy);
            }
        }
        return best;
    };
    T best = alongRow(-1);
    for (int dy = 0; dy <= 1; ++dy) {
        const T candidate = alongRow(dy);
        if (beats(candidate, best)) {
            best = candidate;
        }
    }
    return best;
}

constexpr auto kGreater = [](auto a, auto b) { return a > b; };
constexpr auto kLess = [](auto a, auto b) { return a < b; };

void expectFloatFormsEqualTheDefinition(const BorderedPlane<float>& src) {
    forEachTarget([&] {
        GuardedPlane<float> dilated(src.width(), src.height(), 3, 1);
        GuardedPlane<float> eroded(src.width(), src.height(), 8, 4);
        ASSERT_EQ(kOk, dilate3x3F32(src.data(), src.step(), dilated.data(), dilated.step(),
                                    src.width(), src.height()));
        ASSERT_EQ(kOk, erode3x3F32(src.data(), src.step(), eroded.data(), eroded.step(),
                                   src.width(), src.height()));
        EXPECT_TRUE(dilated.intact() && eroded.intact() && src.intact());
        for (int y = 0; y < src.height(); ++y) {
            for (int x = 0; x < src.width(); ++x) {
                ASSERT_EQ(std::bit_cast<std::uint32_t>(extreme(src, x, y, kGreater)),
                          std::bit_cast<std::uint32_t>(dilated.at(x, y)));
                ASSERT_EQ(std::bit_cast<std::uint32_t>(extreme(src, x, y, kLess)),
                          std::bit_cast<std::uint32_t>(eroded.at(x, y)));
            }
        }
    });
}

TEST(Morphology, FloatFormsEqualTheDefinitionBitForBitOnEveryVariant) {
    std::mt19937 random(41);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        BorderedPlane<float> src(shape.width, shape.height, 1, shape.extraStep, shape.misalign);
        src.fill([&] { return value(random); });
        expectFloatFormsEqualTheDefinition(src);
    }
}

TEST(Morphology, SignedZerosInfinitiesAndNaNGiveTheSameBitsOnEveryVariant) {
    std::mt19937 random(42);
    const float odd[] = {0.0f,
                         -0.0f,
                         1.0f,
                         std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity(),
                         std::numeric_limits<float>::quiet_NaN()};
    std::uniform_int_distribution<std::size_t> choice(0, 5);
    for (int i = 0; i < 8; ++i) {
        BorderedPlane<float> src(40 + i, 9, 1);
        src.fill([&] { return odd[choice(random)]; });
        expectFloatFormsEqualTheDefinition(src);
    }
}

TEST(Morphology, InPlaceFormsEqualTheDefinitionOnACopyAndLeaveTheFrame) {
    std::mt19937 random(43);
    std::uniform_int_distribution<int> pixel(0, 255);
    auto all = test::planeShapes(random);
    all.push_back({4096, 3, 0, 0});
    all.push_back({4097, 3, 0, 0}); // beyond the buffer on the stack
    for (const PlaneShape& shape : all) {
        BorderedPlane<std::uint8_t> original(shape.width, shape.height, 1, shape.extraStep,
                                             shape.misalign);
        original.fill([&] { return pixel(random); });
        BorderedPlane<std::uint8_t> largest = original;
        BorderedPlane<std::uint8_t> smallest = original;
        for (int y = 0; y < shape.height; ++y) {
            for (int x = 0; x < shape.width; ++x) {
                largest.set(x, y, extreme(original, x, y, kGreater));
                smallest.set(x, y, extreme(original, x, y, kLess));
            }
        }
        forEachTarget([&] {
            BorderedPlane<std::uint8_t> dilated = original;
            ASSERT_EQ(
                kOk, dilate3x3InPlaceU8(dilated.data(), dilated.step(), shape.width, shape.height));
            EXPECT_TRUE(dilated.intact() && dilated.sameBits(largest))
                << shape.width << 'x' << shape.height;
            BorderedPlane<std::uint8_t> eroded = original;
            ASSERT_EQ(kOk,
                      erode3x3InPlaceU8(eroded.data(), eroded.step(), shape.width, shape.height));
            EXPECT_TRUE(eroded.intact() && eroded.sameBits(smallest))
                << shape.width << 'x' << shape.height;
        });
    }
}

TEST(Morphology, EveryFormChecksPointersThenSizesThenStepsAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    for (const auto morph : {dilate3x3F32, erode3x3F32}) {
        test::expectChecksInOrder({"of floats", 2, 2, 2, [morph](const Arguments& g) {
                                       return morph(g.inside<float>(0), g.steps[0], g.at<float>(1),
                                                    g.steps[1], g.sizes[0], g.sizes[1]);
                                   }});
    }
    for (const auto morph : {dilate3x3InPlaceU8, erode3x3InPlaceU8}) {
        test::expectChecksInOrder({"in place", 1, 2, 1, [morph](const Arguments& g) {
                                       return morph(g.inside<std::uint8_t>(0), g.steps[0],
                                                    g.sizes[0], g.sizes[1]);
                                   }});
    }
}

TEST(Morphology, StepsShorterThanARowWithItsFrameAreRefusedAndNothingIsWritten) {
    BorderedPlane<float> src(4, 4, 1);
    src.fill([] { return 1.0f; });
    GuardedPlane<float> dst(4, 4);
    dst.fill([] { return 7.0f; });
    const GuardedPlane<float> before = dst;
    for (const auto morph : {dilate3x3F32, erode3x3F32}) {
        EXPECT_EQ(kBadBorderStep, morph(src.data(), 23, dst.data(), 16, 4, 4));
    }
    EXPECT_TRUE(dst.sameBits(before));

    BorderedPlane<std::uint8_t> bytes(4, 4, 1);
    bytes.fill([n = 0]() mutable { return n += 5; });
    const BorderedPlane<std::uint8_t> bytesBefore = bytes;
    for (const auto morph : {dilate3x3InPlaceU8, erode3x3InPlaceU8}) {
        EXPECT_EQ(kBadBorderStep, morph(bytes.data(), 5, 4, 4));
    }
    EXPECT_TRUE(bytes.sameBits(bytesBefore));
}

TEST(Morphology, InPlaceFormsWithoutMemoryForTheirRowsWriteNothing) {
    BorderedPlane<std::uint8_t> bytes(4097, 2, 1);
    bytes.fill([n = 0]() mutable { return n += 5; });
    const BorderedPlane<std::uint8_t> before = bytes;
    const test::NothrowNewFails noMemory;
    for (const auto morph : {dilate3x3InPlaceU8, erode3x3InPlaceU8}) {
        EXPECT_EQ(kOutOfMemory, morph(bytes.data(), bytes.step(), 4097, 2));
        EXPECT_TRUE(bytes.sameBits(before));
        EXPECT_EQ(kOk, morph(bytes.data(), bytes.step(), 1, 1)) << "needs no heap";
        bytes = before;
    }
}

} // namespace
