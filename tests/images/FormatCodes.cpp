#include "velimproclib/images/FormatCodes.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace vel;

struct Format {
    std::int32_t code;
    std::int32_t channels, bytesPerChannel, bytesPerPixel, bytesPerPixelColor;
};

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

constexpr Format kFormats[] = {{kLowest, 0, 1, 0, 0}, {-1, 0, 1, 0, 0},      {0, 0, 1, 0, 0},
                               {psC3U8, 3, 1, 3, 3},  {2, 0, 1, 0, 0},       {psC3U16, 3, 2, 6, 6},
                               {4, 0, 1, 0, 0},       {psC4U8, 3, 1, 4, 4},  {psC4U16, 3, 2, 8, 8},
                               {psC1U8, 1, 1, 1, 0},  {psC1U16, 1, 2, 2, 0}, {9, 0, 1, 0, 0},
                               {kHighest, 0, 1, 0, 0}};

TEST(FormatCodes, ChannelsAndBytesOfEveryCode) {
    for (const Format& format : kFormats) {
        SCOPED_TRACE(format.code);
        EXPECT_EQ(psChannels(format.code), format.channels);
        EXPECT_EQ(psBytesPerChannel(format.code), format.bytesPerChannel);
        EXPECT_EQ(psBytesPerPixelColor(format.code), format.bytesPerPixelColor);
    }
}

TEST(FormatCodes, PixelAddressCountsRowsInStepsAndColumnsInPixels) {
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

TEST(FormatCodes, PixelAddressMayLieBeforeTheBase) {
    std::uint8_t image[1000];
    EXPECT_EQ(psPixelAddress(psC4U16, image + 500, 100, -2, -1), image + 500 - 100 - 16);
}

TEST(FormatCodes, InvalidCodesHaveNoAddress) {
    std::uint8_t image[8];
    EXPECT_EQ(psPixelAddress(2, image, 8, 0, 0), nullptr);
    EXPECT_EQ(psPixelAddress(9, image, 8, 0, 0), nullptr);
}

TEST(FormatCodes, InvalidCodeTwoHasNoChannelsAndOneBytePerChannel) {
    EXPECT_EQ(psChannels(2), 0);
    EXPECT_EQ(psBytesPerChannel(2), 1);
}

TEST(FormatCodes, RoundUpKeepsMultiplesOfSixteen) {
    EXPECT_EQ(roundUp16(0), 0);
    EXPECT_EQ(roundUp16(16), 16);
    EXPECT_EQ(roundUp16(-32), -32);
    EXPECT_EQ(roundUp16(1), 16);
    EXPECT_EQ(roundUp16(17), 32);
    EXPECT_EQ(roundUp16(31), 32);
}

TEST(FormatCodes, RoundUpWorksUpToTheLargestMultipleOfSixteen) {
    EXPECT_EQ(roundUp16(2147483617), 2147483632);
    EXPECT_EQ(roundUp16(2147483632), 2147483632);
}

TEST(FormatCodes, RoundUpOfNegativeNumbersGivesTheSecondNextMultiple) {
    EXPECT_EQ(roundUp16(-5), 16);
    EXPECT_EQ(roundUp16(-20), 0);
}

} // namespace
