#include "velimproclib/primitives/base/truncate.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace vel;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

TEST(Truncate, RoundsTowardZeroForBothSigns) {
    EXPECT_EQ(truncateToInt(0.0), 0);
    EXPECT_EQ(truncateToInt(-0.0), 0);
    EXPECT_EQ(truncateToInt(0.99999999), 0);
    EXPECT_EQ(truncateToInt(-0.99999999), 0);
    EXPECT_EQ(truncateToInt(2.5), 2);
    EXPECT_EQ(truncateToInt(-2.5), -2);
    EXPECT_EQ(truncateToInt(std::numeric_limits<double>::denorm_min()), 0);
}

TEST(Truncate, NaNOfEitherSignGivesZero) {
    EXPECT_EQ(truncateToInt(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(truncateToInt(-std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(truncateToInt(static_cast<double>(std::numeric_limits<float>::quiet_NaN())), 0);
}

TEST(Truncate, InfinitiesAndHugeValuesGiveTheEndsOfTheRange) {
    EXPECT_EQ(truncateToInt(kInfinity), kHighest);
    EXPECT_EQ(truncateToInt(-kInfinity), kLowest);
    EXPECT_EQ(truncateToInt(std::numeric_limits<double>::max()), kHighest);
    EXPECT_EQ(truncateToInt(std::numeric_limits<double>::lowest()), kLowest);
}

TEST(Truncate, UpperEndOfTheRangeIsReachedAtItsLastValue) {
    EXPECT_EQ(truncateToInt(2147483646.999), kHighest - 1);
    EXPECT_EQ(truncateToInt(2147483647.0), kHighest);
    EXPECT_EQ(truncateToInt(2147483647.999), kHighest);
    EXPECT_EQ(truncateToInt(2147483648.0), kHighest);
    EXPECT_EQ(truncateToInt(std::nextafter(2147483648.0, kInfinity)), kHighest);
}

TEST(Truncate, LowerEndOfTheRangeIsReachedAtItsLastValue) {
    EXPECT_EQ(truncateToInt(-2147483647.999), kLowest + 1);
    EXPECT_EQ(truncateToInt(-2147483648.0), kLowest);
    EXPECT_EQ(truncateToInt(-2147483648.999), kLowest);
    EXPECT_EQ(truncateToInt(-2147483649.0), kLowest);
}

TEST(Truncate, IsKnownAtCompileTime) {
    static_assert(truncateToInt(-7.9) == -7);
    static_assert(truncateToInt(1e300) == kHighest);
}

} // namespace
