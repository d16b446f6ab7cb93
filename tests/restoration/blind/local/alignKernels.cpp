#include "restoration/blind/local/alignKernels.h"

#include "restoration/blind/local/meanAround.h"
#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"
#include "restoration/blind/squares/moveKernel.h"
#include "restoration/failures/Failure.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

constexpr int kSide = 25;

SquareKernel hookAt(const KernelPlace& place) {
    return moved(withSide(hook().scaled(), kSide), place);
}

SquareKernel point() {
    SquareKernel kernel(kSide);
    kernel.at(kSide / 2, kSide / 2) = 1.0;
    return kernel;
}

/// Three by one cells with the same kernel at different places.
GridKernels scatteredHooks() {
    GridKernels kernels{{3, 1}, hookAt({}), {}};
    for (const KernelPlace& place :
         {KernelPlace{2.0, -1.0}, KernelPlace{-1.0, 0.0}, KernelPlace{0.0, 1.0}}) {
        kernels.found.push_back({.kernel = hookAt(place), .agreement = 0.9});
    }
    return kernels;
}

TEST(AlignKernels, EqualKernelsComeToTheSamePlace) {
    GridKernels kernels = scatteredHooks();
    alignKernels(kernels, {});
    for (const CellKernel& found : kernels.found) {
        const KernelPlace centre = centreOf(found.kernel);
        EXPECT_NEAR(centre.right, 0.0, 0.05);
        EXPECT_NEAR(centre.down, 0.0, 0.05);
    }
}

TEST(AlignKernels, SharpCellsStayPointsInTheMiddle) {
    GridKernels kernels = scatteredHooks();
    kernels.found[1] = {.kernel = point(), .agreement = 1.0, .isSharp = true};
    alignKernels(kernels, {});
    EXPECT_EQ(kernels.found[1].kernel.values, point().values);
    EXPECT_EQ(smoothed(kernels)[1].values, point().values);
}

TEST(AlignKernels, EndsWhenCancelled) {
    Cancellation cancellation;
    cancellation.request();
    GridKernels kernels = scatteredHooks();
    EXPECT_THROW(alignKernels(kernels, cancellation), Failure);
}

TEST(MeanAround, WeighsNeighboursByReliabilityAndDistance) {
    GridKernels kernels{{2, 2}, SquareKernel(3), {}};
    for (int i = 0; i < 4; ++i) {
        SquareKernel kernel(3);
        kernel.values[static_cast<std::size_t>(i)] = 1.0;
        kernels.found.push_back({.kernel = kernel, .agreement = i == 1 ? 0.5 : 1.0});
    }
    kernels.whole.values[8] = 1.0;
    const SquareKernel mean = meanAround(kernels, 0, 1.0);
    // 1 for the cell, 0.1 * 0.5^3 beside, 0.1 below, 0.05 across the corner, 0.01 for the picture.
    const double sum = 1.0 + 0.0125 + 0.1 + 0.05 + 0.01;
    EXPECT_NEAR(mean.values[0], 1.0 / sum, 1e-12);
    EXPECT_NEAR(mean.values[1], 0.0125 / sum, 1e-12);
    EXPECT_NEAR(mean.values[2], 0.1 / sum, 1e-12);
    EXPECT_NEAR(mean.values[3], 0.05 / sum, 1e-12);
    EXPECT_NEAR(mean.values[8], 0.01 / sum, 1e-12);
    EXPECT_EQ(meanAround(kernels, 0, 0.0).values[0], 0.0);
}

TEST(MeanAround, IsThatOfTheWholePictureWhereNoCellIsReliable) {
    GridKernels kernels = scatteredHooks();
    for (CellKernel& found : kernels.found) {
        found.agreement = 0.0;
    }
    const SquareKernel mean = meanAround(kernels, 1, 1.0);
    EXPECT_NEAR(likeness(mean, kernels.whole), 1.0, 1e-12);
    EXPECT_NEAR(mean.sum(), 1.0, 1e-12);
}

} // namespace
} // namespace restoration
