#include "velimproclib/primitives/base/narrowToInt32.h"

#include <gtest/gtest.h>

namespace {

TEST(NarrowToInt32, ValuesBeyondTheRangeBecomeItsEnds) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(vel::narrowToInt32(-5), -5);
    EXPECT_EQ(vel::narrowToInt32(2147483648), 2147483647);
    EXPECT_EQ(vel::narrowToInt32(kMost), 2147483647);
    EXPECT_EQ(vel::narrowToInt32(-2147483649), -2147483647 - 1);
    EXPECT_EQ(vel::narrowToInt32(-kMost), -2147483647 - 1);
}

} // namespace
