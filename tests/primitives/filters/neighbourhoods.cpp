#include "velimproclib/primitives/filters/neighbourhoods.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace vel;

TEST(Neighbourhoods, StepShorterThanARowWithItsBorderIsRefused) {
    EXPECT_EQ(kOk, checkBorderStep(24, 4, 2, sizeof(float)));
    EXPECT_EQ(kBadBorderStep, checkBorderStep(23, 4, 2, sizeof(float)));
    EXPECT_EQ(kOk, checkBorderStep(4, 4, 0, 1));
    EXPECT_EQ(kBadBorderStep, checkBorderStep(3, 4, 0, 1));
}

TEST(Neighbourhoods, RowsBeyondTheIntegerRangeAreRefusedAndDoNotWrap) {
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(kBadBorderStep, checkBorderStep(kMax, kMax, 2, sizeof(float)));
    EXPECT_EQ(kBadBorderStep, checkBorderStep(kMax, 4, kMax - 1, sizeof(float)));
}

TEST(Neighbourhoods, StepShorterThanARowIsABadStepWhereNoBorderIsRead) {
    EXPECT_EQ(kOk, checkRowStep(16, 4, sizeof(float)));
    EXPECT_EQ(kBadStep, checkRowStep(15, 4, sizeof(float)));
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(kBadStep, checkRowStep(kMax, kMax, sizeof(float)));
}

} // namespace
