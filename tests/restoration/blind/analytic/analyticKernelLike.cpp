#include "restoration/blind/analytic/analyticKernelLike.h"

#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(AnalyticKernelLike, ADiscWithUnevenWeightsBecomesADisc) {
    SquareKernel uneven = withSide(discOfRadius3().scaled(), 15);
    for (std::size_t i = 0; i < uneven.values.size(); ++i) {
        uneven.values[i] *= i % 3 == 0 ? 0.6 : 1.2;
    }
    const auto kernel = analyticKernelLike(withSide(uneven, 15));
    ASSERT_TRUE(kernel);
    EXPECT_GT(likeness(kernel->kernel, discOfRadius3().scaled()), 0.99);
    EXPECT_EQ(kernel->kind.shape, KernelKind::Shape::Disc);
    EXPECT_NEAR(kernel->kind.extent, 3.0f, 0.3f);
}

TEST(AnalyticKernelLike, ALineKeepsItsDirection) {
    const auto kernel = analyticKernelLike(line11().scaled());
    ASSERT_TRUE(kernel);
    EXPECT_GT(likeness(kernel->kernel, line11().scaled()), 0.95);
    EXPECT_EQ(kernel->kind.shape, KernelKind::Shape::Motion);
    EXPECT_NEAR(kernel->kind.extent, 11.0f, 1.0f);
    EXPECT_NEAR(kernel->kind.angle, 22.0f, 3.0f);
    SquareKernel mirrored = line11().scaled();
    for (int row = 0; row < mirrored.side; ++row) {
        for (int column = 0; column < mirrored.side / 2; ++column) {
            std::swap(mirrored.at(row, column), mirrored.at(row, mirrored.side - 1 - column));
        }
    }
    EXPECT_LT(likeness(kernel->kernel, mirrored), 0.8);
}

TEST(AnalyticKernelLike, AGaussianStaysOne) {
    SquareKernel gaussian(15);
    for (int y = -7; y <= 7; ++y) {
        for (int x = -7; x <= 7; ++x) {
            gaussian.at(y + 7, x + 7) = std::exp(-(x * x + y * y) / (2.0 * 1.7 * 1.7));
        }
    }
    const auto kernel = analyticKernelLike(withSide(gaussian, 15));
    ASSERT_TRUE(kernel);
    EXPECT_GT(likeness(kernel->kernel, gaussian), 0.995);
    EXPECT_EQ(kernel->kind.shape, KernelKind::Shape::Gaussian);
    EXPECT_NEAR(kernel->kind.extent, 1.7f, 0.1f);
}

TEST(AnalyticKernelLike, AHookResemblesNone) {
    EXPECT_FALSE(analyticKernelLike(hook().scaled()));
}

} // namespace
} // namespace restoration
