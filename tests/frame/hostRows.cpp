#include "velimproclib/frame/hostRows.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using vel::isEightBits;
using vel::isShorterThanARow;

constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

TEST(HostRows, OnlyFormatOneHasEightBits) {
    EXPECT_TRUE(isEightBits(psC3U8));
    for (const std::int32_t format : {-1, 0, 2, 3, 4, 5, 6, 7, 8, 9}) {
        EXPECT_FALSE(isEightBits(format)) << format;
    }
}

TEST(HostRows, RowHoldsThreeChannelsPerPixel) {
    EXPECT_FALSE(isShorterThanARow(30, psC3U8, 10, 2));
    EXPECT_TRUE(isShorterThanARow(29, psC3U8, 10, 2));
    EXPECT_FALSE(isShorterThanARow(60, psC3U16, 10, 2));
    EXPECT_TRUE(isShorterThanARow(59, psC3U16, 10, 2));
}

TEST(HostRows, StepOfASingleRowIsNotChecked) {
    EXPECT_FALSE(isShorterThanARow(-1, psC3U8, 10, 1));
}

TEST(HostRows, RowsBeyondThirtyTwoBitsAreLongerThanEveryStep) {
    EXPECT_TRUE(isShorterThanARow(kHighest, psC3U8, kHighest, 2));
}

} // namespace
