#include "restoration/blind/squares/likeness.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(Likeness, IgnoresShiftsAndSeesOrientation) {
    SquareKernel hook(9);
    for (int row = 2; row < 7; ++row) {
        hook.at(row, 4) = 0.15;
    }
    hook.at(6, 5) = 0.25;
    SquareKernel moved(11);
    for (int row = 0; row < 9; ++row) {
        for (int column = 0; column < 9; ++column) {
            moved.at(row, column) = hook.at(row, column);
        }
    }
    EXPECT_NEAR(likeness(hook, moved), 1.0, 1e-12);
    SquareKernel turned = hook;
    std::ranges::reverse(turned.values);
    EXPECT_LT(likeness(hook, turned), 0.9);
}

} // namespace
} // namespace restoration
