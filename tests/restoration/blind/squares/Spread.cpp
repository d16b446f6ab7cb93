#include "restoration/blind/squares/Spread.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(Spread, OfAPointIsZeroAnywhere) {
    SquareKernel kernel(7);
    kernel.at(1, 6) = 1.0;
    const Spread spread(kernel);
    EXPECT_NEAR(spread.largest(), 0.0, 1e-12);
    EXPECT_NEAR(spread.smallest(), 0.0, 1e-12);
}

TEST(Spread, OfALineIsThatAlongIt) {
    SquareKernel level(7);
    SquareKernel rising(7);
    for (int i = 1; i < 6; ++i) {
        level.at(4, i) = 0.2;
        rising.at(6 - i, i) = 0.2;
    }
    EXPECT_NEAR(Spread(level).largest(), 2.0, 1e-12);
    EXPECT_NEAR(Spread(level).smallest(), 0.0, 1e-12);
    EXPECT_NEAR(Spread(level).degrees(), 0.0, 1e-12);
    EXPECT_NEAR(Spread(rising).largest(), 4.0, 1e-12);
    EXPECT_NEAR(Spread(rising).mean(), 2.0, 1e-12);
    EXPECT_NEAR(Spread(rising).degrees(), 45.0, 1e-12);
}

} // namespace
} // namespace restoration
