#include "restoration/blind/parts/excessBlur.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

WholeKernel square(int side, int filled) {
    WholeKernel kernel(side);
    const int rim = (side - filled) / 2;
    for (int y = rim; y < side - rim; ++y) {
        for (int x = rim; x < side - rim; ++x) {
            kernel.at(y, x) = 1;
        }
    }
    return kernel;
}

WholeKernel level(int side) {
    WholeKernel kernel(side);
    for (int x = 0; x < side; ++x) {
        kernel.at(side / 2, x) = 1;
    }
    return kernel;
}

WholeKernel upright(int side) {
    WholeKernel kernel(side);
    for (int y = 0; y < side; ++y) {
        kernel.at(y, side / 2) = 1;
    }
    return kernel;
}

EdgeSpectrum edgesAfter(const WholeKernel& blur) {
    return edgeSpectrum(blurredPicture(DrawnScene(320, 280, 31), blur, 1, 32), {});
}

TEST(ExcessBlur, IsSmallForTheKernelThatBlurredThePicture) {
    for (const WholeKernel& blur : {square(3, 3), level(3), line11(), hook()}) {
        EXPECT_LT(excessBlur(edgesAfter(blur), blur.scaled()), 1.0);
    }
}

TEST(ExcessBlur, IsLargeForKernelsThatAreTooWide) {
    EXPECT_GT(excessBlur(edgesAfter(square(1, 1)), square(3, 3).scaled()), 1.5);
    EXPECT_GT(excessBlur(edgesAfter(square(3, 3)), square(5, 5).scaled()), 1.5);
}

TEST(ExcessBlur, SeesTheDirectionOfABlur) {
    const EdgeSpectrum edges = edgesAfter(level(3));
    EXPECT_GT(excessBlur(edges, upright(3).scaled()), excessBlur(edges, level(3).scaled()) + 1.0);
    EXPECT_GT(excessBlur(edges, square(3, 3).scaled()), excessBlur(edges, level(3).scaled()) + 1.0);
}

TEST(ExcessBlur, OfAPointIsNotPositiveInABlurredPicture) {
    EXPECT_LT(excessBlur(edgesAfter(square(3, 3)), square(1, 1).scaled()), 0.0);
}

TEST(ExcessBlur, IsZeroWhereNoEdgeIsVisible) {
    EXPECT_EQ(excessBlur(EdgeSpectrum(), square(3, 3).scaled()), 0.0);
}

} // namespace
} // namespace restoration
