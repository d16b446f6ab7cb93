#include "restoration/blind/squares/raggednessOf.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(RaggednessOf, IsLowerForScatteredWeightsThanForAFullDisc) {
    SquareKernel full(9);
    std::ranges::fill(full.values, 1.0 / 81.0);
    SquareKernel scattered(9);
    for (const int row : {0, 4, 8}) {
        for (const int column : {0, 4, 8}) {
            scattered.at(row, column) = 1.0 / 9.0;
        }
    }
    EXPECT_GT(raggednessOf(full), raggednessOf(scattered) + 1.0);
}

} // namespace
} // namespace restoration
