#include "velimproclib/catalogue/images/PixelAddress.h"

#include "velorncore10.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace vel;

struct Format {
    std::int32_t code;
    std::int32_t bytesPerPixel, bytesPerPixelColor;
};

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

constexpr Format kFormats[] = {{kLowest, 0, 0}, {-1, 0, 0},      {0, 0, 0},       {psC3U8, 3, 3},
                               {2, 0, 0},       {psC3U16, 6, 6}, {4, 0, 0},       {psC4U8, 4, 4},
                               {psC4U16, 8, 8}, {psC1U8, 1, 0},  {psC1U16, 2, 0}, {9, 0, 0},
                               {kHighest, 0, 0}};

TEST(PixelAddress, BytesOfColourPixels) {
    for (const Format& format : kFormats) {
        EXPECT_EQ(psBytesPerPixelColor(format.code), format.bytesPerPixelColor) << format.code;
    }
}

TEST(PixelAddress, CountsRowsInStepsAndColumnsInPixels) {
    std::uint8_t image[1000];
    for (const Format& format : kFormats) {
        SCOPED_TRACE(format.code);
        std::uint8_t* const expected =
            format.bytesPerPixel == 0 ? nullptr : image + 3 * 100 + 5 * format.bytesPerPixel;
        EXPECT_EQ(psPixelAddress(format.code, image, 100, 5, 3), expected);
        const std::uint8_t* readOnly = image;
        EXPECT_EQ(psPixelAddress(format.code, readOnly, 100, 5, 3), expected);
    }
}

TEST(PixelAddress, MayLieBeforeTheBase) {
    std::uint8_t image[1000];
    EXPECT_EQ(psPixelAddress(psC4U16, image + 500, 100, -2, -1), image + 500 - 100 - 16);
}

TEST(PixelAddress, InvalidCodesHaveNoAddress) {
    std::uint8_t image[8];
    EXPECT_EQ(psPixelAddress(2, image, 8, 0, 0), nullptr);
    EXPECT_EQ(psPixelAddress(9, image, 8, 0, 0), nullptr);
}

} // namespace
