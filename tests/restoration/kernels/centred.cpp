#include "restoration/kernels/centred.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

/// A kernel of zeros with ones at `row` and `column`.
Kernel point(int width, int height, int row, int column) {
    Kernel kernel{width, height, std::vector<float>(static_cast<std::size_t>(width * height))};
    kernel.row(row)[column] = 1.0f;
    return kernel;
}

TEST(Centred, PointsMoveToTheMiddle) {
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 7; ++column) {
            EXPECT_EQ(centred(point(7, 5, row, column)).values, point(7, 5, 2, 3).values);
        }
    }
}

TEST(Centred, CentreOfMassIsWithinHalfAPixelOfTheMiddle) {
    const Kernel kernel = centred({7, 1, {0, 0, 0, 0, .2f, .3f, .5f}});
    EXPECT_EQ(kernel.values, (std::vector<float>{0, 0, .2f, .3f, .5f, 0, 0}));
}

TEST(Centred, NoValueIsLost) {
    const std::vector<float> values{.1f, 0, 0, 0, .9f};
    EXPECT_EQ(centred({5, 1, values}).values, values);
}

TEST(Centred, SizeAndOriginStay) {
    Kernel kernel = point(3, 5, 0, 0);
    kernel.isFound = true;
    const Kernel moved = centred(kernel);
    EXPECT_EQ(moved.width, 3);
    EXPECT_EQ(moved.height, 5);
    EXPECT_TRUE(moved.isFound);
}

} // namespace
} // namespace restoration
