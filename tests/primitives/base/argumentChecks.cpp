#include "velimproclib/primitives/base/argumentChecks.h"

#include <gtest/gtest.h>

namespace {

using namespace vel;

const int kSomething = 0;

TEST(ArgumentChecks, AcceptsPointersSizesAndStepsThatAreAllUsable) {
    EXPECT_EQ(checkArguments({&kSomething}, {1, 1}, {1}), kOk);
    EXPECT_EQ(checkArguments({&kSomething, &kSomething}, {7}, {}), kOk);
}

TEST(ArgumentChecks, ChecksPointersBeforeSizesBeforeSteps) {
    EXPECT_EQ(checkArguments({&kSomething, nullptr}, {0, 0}, {0}), kNullPointer);
    EXPECT_EQ(checkArguments({&kSomething}, {1, 0}, {0}), kBadSize);
    EXPECT_EQ(checkArguments({&kSomething}, {-3, 1}, {-1}), kBadSize);
    EXPECT_EQ(checkArguments({&kSomething}, {1, 1}, {4, 0}), kBadStep);
    EXPECT_EQ(checkArguments({&kSomething}, {1, 1}, {-4}), kBadStep);
}

TEST(ArgumentChecks, AcceptsAStepBelowTheRowLength) {
    EXPECT_EQ(checkArguments({&kSomething}, {100, 1}, {1}), kOk);
}

} // namespace
