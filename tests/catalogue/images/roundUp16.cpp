#include "velimproclib/catalogue/images/roundUp16.h"

#include <gtest/gtest.h>

namespace {

using vel::roundUp16;

TEST(RoundUp16, KeepsMultiplesOfSixteen) {
    EXPECT_EQ(roundUp16(0), 0);
    EXPECT_EQ(roundUp16(16), 16);
    EXPECT_EQ(roundUp16(-32), -32);
    EXPECT_EQ(roundUp16(1), 16);
    EXPECT_EQ(roundUp16(17), 32);
    EXPECT_EQ(roundUp16(31), 32);
}

TEST(RoundUp16, WorksUpToTheLargestMultipleOfSixteen) {
    EXPECT_EQ(roundUp16(2147483617), 2147483632);
    EXPECT_EQ(roundUp16(2147483632), 2147483632);
}

TEST(RoundUp16, NegativeNumbersGiveTheSecondNextMultiple) {
    EXPECT_EQ(roundUp16(-5), 16);
    EXPECT_EQ(roundUp16(-20), 0);
}

} // namespace
