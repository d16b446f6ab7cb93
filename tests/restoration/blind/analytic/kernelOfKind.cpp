#include "restoration/blind/analytic/kernelOfKind.h"

#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"
#include "restoration/kernels/analyticKernel.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

using Shape = KernelKind::Shape;

/// The mean of the squared places along the direction of `degrees`, and across it.
std::pair<double, double> momentsOf(const SquareKernel& kernel, double degrees) {
    const double angle = degrees * std::acos(-1.0) / 180.0;
    std::pair<double, double> moments;
    for (int row = 0; row < kernel.side; ++row) {
        for (int column = 0; column < kernel.side; ++column) {
            const double right = column - kernel.radius();
            const double up = kernel.radius() - row;
            const double along = right * std::cos(angle) + up * std::sin(angle);
            const double across = up * std::cos(angle) - right * std::sin(angle);
            moments.first += along * along * kernel.at(row, column);
            moments.second += across * across * kernel.at(row, column);
        }
    }
    return moments;
}

TEST(KernelOfKind, MotionsSpreadAlongTheirDirection) {
    for (const float angle : {0.0f, 90.0f, 37.5f, -62.0f}) {
        const SquareKernel kernel = kernelOfKind({Shape::Motion, 13.6f, angle});
        const auto [along, across] = momentsOf(kernel, static_cast<double>(angle));
        // Of a stroke, and up to a quarter more for the distribution among pixels.
        EXPECT_NEAR(along, 12.6 * 12.6 / 12.0 + 0.1, 0.2) << angle;
        EXPECT_LT(across, 0.26) << angle;
    }
}

TEST(KernelOfKind, MotionsResembleTheLibrarys) {
    const SquareKernel kernel = kernelOfKind({Shape::Motion, 17.0f, 30.0f});
    const Kernel made = analyticKernel(VELORN_BLUR_MOTION, 17.0f, 30.0f);
    SquareKernel square(made.largerSide());
    for (int row = 0; row < made.height; ++row) {
        for (int column = 0; column < made.width; ++column) {
            square.at(row + (square.side - made.height) / 2,
                      column + (square.side - made.width) / 2) =
                static_cast<double>(made.at(row, column));
        }
    }
    EXPECT_GT(likenessNearby(kernel, square), 0.97);
}

TEST(KernelOfKind, MotionsWithoutLengthArePoints) {
    EXPECT_EQ(extentOf(kernelOfKind({Shape::Motion, 1.0f, 30.0f})), 1);
}

} // namespace
} // namespace restoration
