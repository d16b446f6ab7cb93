#include "restoration/blind/squares/removeSpecks.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(RemoveSpecks, TakesWhatIsBelowTheThresholdAndLightPieces) {
    SquareKernel kernel(9);
    kernel.at(4, 4) = 1.0;
    kernel.at(4, 5) = 0.5;
    kernel.at(5, 6) = 0.1;   // touches a corner: the same piece
    kernel.at(4, 3) = 0.049; // below the threshold
    kernel.at(0, 0) = 0.1;   // alone, lighter than a tenth
    kernel.at(8, 8) = 0.2;   // alone, heavy enough
    removeSpecks(0.05, kernel);
    EXPECT_EQ(kernel.at(4, 3), 0.0);
    EXPECT_EQ(kernel.at(0, 0), 0.0);
    EXPECT_NEAR(kernel.at(5, 6), 0.1 / 1.8, 1e-12);
    EXPECT_NEAR(kernel.at(8, 8), 0.2 / 1.8, 1e-12);
    EXPECT_NEAR(kernel.sum(), 1.0, 1e-12);
}

} // namespace
} // namespace restoration
