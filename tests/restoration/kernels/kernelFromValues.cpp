#include "restoration/kernels/kernelFromValues.h"

#include "restoration/failures/Failure.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace restoration {
namespace {

constexpr float kLargest = std::numeric_limits<float>::max();

std::string failureOf(std::vector<float> values) {
    const int width = static_cast<int>(values.size());
    try {
        kernelFromValues(std::move(values), width, 1);
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), VELORN_STATUS_INVALID_ARGUMENT);
        return failure.what();
    }
}

TEST(KernelFromValues, ValuesAreScaledToSumOne) {
    const Kernel kernel = kernelFromValues({1, 2, 1, 2, 4, 2}, 3, 2);
    EXPECT_EQ(kernel.width, 3);
    EXPECT_EQ(kernel.height, 2);
    EXPECT_FLOAT_EQ(kernel.at(0, 0), 1.0f / 12.0f);
    EXPECT_FLOAT_EQ(kernel.at(1, 1), 4.0f / 12.0f);
}

TEST(KernelFromValues, SumsThatDifferFromOneByRoundingStay) {
    const std::vector<float> values{0.333333f, 0.333333f, 0.333333f};
    EXPECT_EQ(kernelFromValues(values, 3, 1).values, values);
}

TEST(KernelFromValues, NegativeValuesAreLegal) {
    EXPECT_EQ(kernelFromValues({-1, 4, -1}, 3, 1).values, (std::vector<float>{-0.5f, 2, -0.5f}));
}

TEST(KernelFromValues, LargeValuesDoNotOverflowTheirSum) {
    EXPECT_FLOAT_EQ(kernelFromValues({kLargest, kLargest, kLargest}, 3, 1).at(0, 1), 1.0f / 3.0f);
}

TEST(KernelFromValues, ValuesThatAreNotFiniteFail) {
    const std::string message = "the kernel has values that are not finite";
    EXPECT_EQ(failureOf({1, std::numeric_limits<float>::quiet_NaN(), 1}), message);
    EXPECT_EQ(failureOf({1, std::numeric_limits<float>::infinity(), 1}), message);
}

TEST(KernelFromValues, SumsThatAreNotPositiveFail) {
    const std::string message = "the sum of the kernel's values is not positive";
    EXPECT_EQ(failureOf({0, 0, 0}), message);
    EXPECT_EQ(failureOf({1, -3, 1}), message);
}

TEST(KernelFromValues, QuotientsBeyondFloatsFail) {
    EXPECT_EQ(failureOf({kLargest, -kLargest, 0.5f}),
              "the kernel's values are too large for their sum");
}

} // namespace
} // namespace restoration
