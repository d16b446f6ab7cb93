#include "restoration/boundary/argumentChecks.h"

#include "tests/restoration/boundary/failureOf.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

using test::failureOf;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::string failure(float value, const FloatRange& range) {
    VelornStatus status = VELORN_STATUS_INVALID_ARGUMENT;
    const std::string message = failureOf([&] { requireRange(value, range, "x"); }, &status);
    EXPECT_EQ(status, VELORN_STATUS_INVALID_ARGUMENT);
    return message;
}

std::string failure(std::int64_t value, std::int64_t least, std::int64_t most) {
    return failureOf([&] { requireRange(value, least, most, "x"); });
}

TEST(NumberText, IsShort) {
    EXPECT_EQ(numberText(0.1f), "0.1");
    EXPECT_EQ(numberText(-1e30f), "-1e+30");
    EXPECT_EQ(numberText(std::int64_t{-12}), "-12");
}

TEST(RequirePointer, NullFails) {
    const int number = 1;
    EXPECT_EQ(failureOf([&] { requirePointer(&number, "number"); }), "");
    EXPECT_EQ(failureOf([] { requirePointer(nullptr, "number"); }), "number is null");
}

TEST(RequireRange, IntegersWithinTheLimitsPass) {
    EXPECT_EQ(failure(2, 2, 4), "");
    EXPECT_EQ(failure(4, 2, 4), "");
    EXPECT_EQ(failure(1, 2, 4), "x is 1, but must be 2..4");
    EXPECT_EQ(failure(5, 2, 4), "x is 5, but must be 2..4");
    EXPECT_EQ(failure(1, 2, std::numeric_limits<std::int32_t>::max()),
              "x is 1, but must be at least 2");
}

TEST(RequireRange, FloatsWithinTheLimitsPass) {
    const FloatRange range{-1.0f, 3.0f};
    EXPECT_EQ(failure(-1.0f, range), "");
    EXPECT_EQ(failure(3.0f, range), "");
    EXPECT_EQ(failure(-1.1f, range), "x is -1.1, but must be -1..3");
    EXPECT_EQ(failure(3.1f, range), "x is 3.1, but must be -1..3");
}

TEST(RequireRange, FloatsThatAreNotFiniteFail) {
    for (const FloatRange& range : {FloatRange{}, FloatRange{-kInfinity, kInfinity}}) {
        for (const float value : {kNaN, kInfinity, -kInfinity}) {
            EXPECT_NE(failure(value, range), "");
        }
    }
    EXPECT_EQ(failure(kNaN, {-kInfinity, kInfinity}), "x is nan, but must be finite");
}

TEST(RequireRange, LeastValueMayBeExcluded) {
    EXPECT_EQ(failure(0.0f, {.excludesLeast = true}), "x is 0, but must be above 0");
    EXPECT_EQ(failure(1e-30f, {.excludesLeast = true}), "");
    EXPECT_EQ(failure(0.0f, {}), "");
    EXPECT_EQ(failure(-2.0f, {}), "x is -2, but must be at least 0");
}

TEST(RequireRange, AutomaticPassesWhereItIsAllowed) {
    EXPECT_EQ(failure(VELORN_AUTOMATIC, {.allowsAutomatic = true}), "");
    EXPECT_EQ(failure(VELORN_AUTOMATIC, {}), "x is -1, but must be at least 0");
    EXPECT_EQ(failure(-0.5f, {0.0f, 1.0f, false, true}),
              "x is -0.5, but must be 0..1, or VELORN_AUTOMATIC");
}

} // namespace
} // namespace restoration
