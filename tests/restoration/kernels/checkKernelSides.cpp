#include "restoration/kernels/checkKernelSides.h"

#include "restoration/failures/Failure.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

VelornStatus statusOf(int width, int height) {
    try {
        checkKernelSides(width, height);
        return VELORN_STATUS_OK;
    } catch (const Failure& failure) {
        return failure.status();
    }
}

TEST(CheckKernelSides, OddSidesUpToTheLargestPass) {
    EXPECT_EQ(statusOf(1, 1), VELORN_STATUS_OK);
    EXPECT_EQ(statusOf(511, 3), VELORN_STATUS_OK);
    EXPECT_EQ(statusOf(3, 511), VELORN_STATUS_OK);
}

TEST(CheckKernelSides, EvenNegativeAndEmptySidesAreInvalid) {
    for (const int side : {0, -1, 2, 510}) {
        EXPECT_EQ(statusOf(side, 3), VELORN_STATUS_INVALID_ARGUMENT) << side;
        EXPECT_EQ(statusOf(3, side), VELORN_STATUS_INVALID_ARGUMENT) << side;
    }
}

TEST(CheckKernelSides, LongerSidesAreTooLarge) {
    EXPECT_EQ(statusOf(512, 3), VELORN_STATUS_KERNEL_TOO_LARGE);
    EXPECT_EQ(statusOf(3, 513), VELORN_STATUS_KERNEL_TOO_LARGE);
}

} // namespace
} // namespace restoration
