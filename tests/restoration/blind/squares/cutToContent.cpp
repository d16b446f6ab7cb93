#include "restoration/blind/squares/cutToContent.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

/// A square of side 11 with weights at the middle, three columns to the right and a row above.
SquareKernel bent() {
    SquareKernel kernel(11);
    kernel.at(5, 5) = 0.5;
    kernel.at(5, 8) = 0.25;
    kernel.at(4, 5) = 0.25;
    return kernel;
}

TEST(CutToContent, KeepsAPixelMoreThanTheContentOnEachSide) {
    const Kernel kernel = cutToContent(bent(), {11, 11});
    EXPECT_EQ(kernel.width, 9);
    EXPECT_EQ(kernel.height, 5);
    EXPECT_EQ(kernel.at(2, 4), 0.5f);
    EXPECT_EQ(kernel.at(2, 7), 0.25f);
    EXPECT_EQ(kernel.at(1, 4), 0.25f);
}

TEST(CutToContent, StaysWithinTheBoundsAndTheSquare) {
    const Kernel bounded = cutToContent(bent(), {7, 3});
    EXPECT_EQ(bounded.width, 7);
    EXPECT_EQ(bounded.height, 3);
    SquareKernel full(3);
    full.at(0, 0) = 1.0;
    const Kernel kernel = cutToContent(full, {11, 11});
    EXPECT_EQ(kernel.width, 3);
    EXPECT_EQ(kernel.height, 3);
    EXPECT_EQ(kernel.at(0, 0), 1.0f);
}

} // namespace
} // namespace restoration
