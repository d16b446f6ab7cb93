#include "hosts/command/arguments/NumberRange.h"

#include "hosts/command/terminal/Failure.h"
#include "tests/hosts/command/failureText.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using velorn::NumberRange;

constexpr NumberRange kRange{-0.5f, 2.0f};

std::string failureFor(float value, const std::string& unit) {
    return vel::test::failureText<velorn::UsageFailure>(
        [&] { kRange.check("--size", value, unit); });
}

TEST(NumberRange, TextShowsTheBounds) {
    EXPECT_EQ(kRange.text(), "-0.5..2");
}

TEST(NumberRange, BoundsBelongToTheRange) {
    EXPECT_EQ(failureFor(-0.5f, ""), "");
    EXPECT_EQ(failureFor(2.0f, ""), "");
}

TEST(NumberRange, OtherValuesAndNanAreRefusedWithTheRange) {
    EXPECT_EQ(failureFor(-0.6f, ""), "--size must be from -0.5 to 2");
    EXPECT_EQ(failureFor(2.1f, " pixels"), "--size must be from -0.5 to 2 pixels");
    EXPECT_NE(failureFor(std::numeric_limits<float>::quiet_NaN(), ""), "");
}

} // namespace
