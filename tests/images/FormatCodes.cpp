#include "velimproclib/images/FormatCodes.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace vel;

struct Format {
    std::int32_t code;
    std::int32_t channels, bytesPerChannel;
};

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

constexpr Format kFormats[] = {{kLowest, 0, 1}, {-1, 0, 1},      {0, 0, 1},       {psC3U8, 3, 1},
                               {2, 0, 1},       {psC3U16, 3, 2}, {4, 0, 1},       {psC4U8, 3, 1},
                               {psC4U16, 3, 2}, {psC1U8, 1, 1},  {psC1U16, 1, 2}, {9, 0, 1},
                               {kHighest, 0, 1}};

TEST(FormatCodes, ChannelsAndBytesOfEveryCode) {
    for (const Format& format : kFormats) {
        SCOPED_TRACE(format.code);
        EXPECT_EQ(psChannels(format.code), format.channels);
        EXPECT_EQ(psBytesPerChannel(format.code), format.bytesPerChannel);
    }
}

TEST(FormatCodes, InvalidCodeTwoHasNoChannelsAndOneBytePerChannel) {
    EXPECT_EQ(psChannels(2), 0);
    EXPECT_EQ(psBytesPerChannel(2), 1);
}

TEST(FormatCodes, OnlyFormatOneHasEightBits) {
    for (const Format& format : kFormats) {
        EXPECT_EQ(isEightBits(format.code), format.code == 1) << format.code;
    }
}

} // namespace
