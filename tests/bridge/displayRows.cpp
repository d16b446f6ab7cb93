#include "velimproclib/bridge/displayRows.h"

#include "tests/support/EachTarget.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace vel;
using namespace vel::test;

int level(std::uint8_t element) {
    return element;
}

int level(std::uint16_t element) {
    return std::min(element / 128, 255);
}

/// Calls `check` for rows of many lengths and start addresses on every processor variant. Only the
/// first row of each shape is used.
template <class Check>
void forRows(Check&& check) {
    std::mt19937 random(1);
    for (PlaneShape shape : planeShapes(random)) {
        shape.height = 1;
        forEachTarget([&] { check(shape, random); });
    }
}

template <class Element>
void expectColoursInDisplayOrder() {
    forRows([](const PlaneShape& shape, std::mt19937& random) {
        auto rgb = shape.plane<Element>(3);
        auto bgra = shape.plane<std::uint8_t>(4);
        rgb.fill([&] { return randomPixel<Element>(random); });
        displayRow(unaligned(rgb.data()), bgra.data(), static_cast<std::size_t>(shape.width));
        EXPECT_TRUE(bgra.intact());
        for (int x = 0; x < shape.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                ASSERT_EQ(bgra.at(4 * x + 2 - c, 0), level(rgb.at(3 * x + c, 0)));
            }
            ASSERT_EQ(bgra.at(4 * x + 3, 0), 255);
        }
    });
}

TEST(DisplayRows, ConvertsToBlueGreenRedAndOpaqueAlpha) {
    expectColoursInDisplayOrder<std::uint8_t>();
    expectColoursInDisplayOrder<std::uint16_t>();
}

template <class Element>
void expectOneColourIsExtracted() {
    forRows([](const PlaneShape& shape, std::mt19937& random) {
        auto rgb = shape.plane<Element>(3);
        rgb.fill([&] { return randomPixel<Element>(random); });
        for (int c = 0; c < 3; ++c) {
            auto plane = shape.plane<std::uint8_t>();
            colourRow(unaligned(rgb.data()), c, plane.data(),
                      static_cast<std::size_t>(shape.width));
            EXPECT_TRUE(plane.intact());
            for (int x = 0; x < shape.width; ++x) {
                ASSERT_EQ(plane.at(x, 0), level(rgb.at(3 * x + c, 0)));
            }
        }
    });
}

TEST(DisplayRows, ExtractsOneColour) {
    expectOneColourIsExtracted<std::uint8_t>();
    expectOneColourIsExtracted<std::uint16_t>();
}

TEST(DisplayRows, EverySixteenBitValueIsReducedByTruncation) {
    std::vector<std::uint16_t> values(65536);
    std::iota(values.begin(), values.end(), std::uint16_t{0});
    values.insert(values.end(), {0, 1});
    const std::size_t pixels = values.size() / 3;
    forEachTarget([&] {
        std::vector<std::uint8_t> bgra(4 * pixels);
        displayRow(unaligned(values.data()), bgra.data(), pixels);
        for (std::size_t i = 0; i < 3 * pixels; ++i) {
            ASSERT_EQ(bgra[i / 3 * 4 + 2 - i % 3], level(values[i])) << values[i];
        }
    });
}

TEST(DisplayRows, UnpackingRestoresPackedColoursAndKeepsAlpha) {
    forRows([](const PlaneShape& shape, std::mt19937& random) {
        auto bgra = shape.plane<std::uint8_t>(4);
        auto rgb = shape.plane<std::uint8_t>(3);
        bgra.fill([&] { return randomPixel<std::uint8_t>(random); });
        packRgbRow(bgra.data(), rgb.data(), static_cast<std::size_t>(shape.width));
        EXPECT_TRUE(rgb.intact());
        auto back = shape.plane<std::uint8_t>(4);
        for (int x = 0; x < shape.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                ASSERT_EQ(rgb.at(3 * x + c, 0), bgra.at(4 * x + 2 - c, 0));
            }
            back.set(4 * x + 3, 0, bgra.at(4 * x + 3, 0));
        }
        unpackRgbRow(rgb.data(), back.data(), static_cast<std::size_t>(shape.width));
        EXPECT_TRUE(back.intact());
        EXPECT_TRUE(back.sameBits(bgra));
    });
}

} // namespace
