#include "restoration/blind/squares/moveKernel.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

/// Three weights in a row about the middle of a square of side 11.
SquareKernel bar() {
    SquareKernel kernel(11);
    kernel.at(5, 4) = 0.25;
    kernel.at(5, 5) = 0.5;
    kernel.at(5, 6) = 0.25;
    return kernel;
}

TEST(MoveKernel, MovesByPartsOfPixels) {
    const SquareKernel kernel = moved(bar(), {1.5, -2.0});
    EXPECT_DOUBLE_EQ(kernel.at(3, 6), 0.375);
    EXPECT_NEAR(centreOf(kernel).right, 1.5, 1e-12);
    EXPECT_NEAR(centreOf(kernel).down, -2.0, 1e-12);
    EXPECT_NEAR(kernel.sum(), 1.0, 1e-12);
}

TEST(MoveKernel, WhatFallsOffIsLost) {
    const SquareKernel kernel = moved(bar(), {-5.0, 0.0});
    EXPECT_DOUBLE_EQ(kernel.at(5, 0), 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(kernel.at(5, 1), 1.0 / 3.0);
}

TEST(MoveKernel, FindsTheMoveThatWasMade) {
    for (const KernelPlace place : {KernelPlace{0.0, 0.0}, {1.0, -2.0}, {0.4, 1.7}}) {
        const KernelPlace back = bestMove(moved(bar(), place), bar());
        EXPECT_NEAR(back.right, -place.right, 0.15);
        EXPECT_NEAR(back.down, -place.down, 0.15);
    }
}

} // namespace
} // namespace restoration
