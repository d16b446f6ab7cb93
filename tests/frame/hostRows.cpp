#include "velimproclib/frame/hostRows.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using vel::isShorterThanARow;

constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

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
