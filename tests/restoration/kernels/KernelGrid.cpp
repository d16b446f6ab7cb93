#include "restoration/kernels/KernelGrid.h"

#include <gtest/gtest.h>
#include <numeric>
#include <utility>
#include <vector>

namespace restoration {
namespace {

Kernel row(std::vector<float> values) {
    const int width = static_cast<int>(values.size());
    Kernel kernel;
    kernel.width = width;
    kernel.height = 1;
    kernel.values = std::move(values);
    return kernel;
}

Kernel column(std::vector<float> values) {
    Kernel kernel = row(std::move(values));
    std::swap(kernel.width, kernel.height);
    return kernel;
}

TEST(KernelGrid, GivesTheKernelOfACellAtItsMiddle) {
    const KernelGrid grid({row({1.0f}), row({0.5f, 0.0f, 0.5f})}, 2, 1);
    EXPECT_EQ(grid.width(), 3);
    EXPECT_EQ(grid.interpolated(0.25, 0.5).values, (std::vector{0.0f, 1.0f, 0.0f}));
    EXPECT_EQ(grid.interpolated(0.75, 0.5).values, (std::vector{0.5f, 0.0f, 0.5f}));
}

TEST(KernelGrid, ChangesLinearlyBetweenTheMiddlesAndNotBeyond) {
    const KernelGrid grid({row({1.0f}), row({0.5f, 0.0f, 0.5f})}, 2, 1);
    EXPECT_EQ(grid.interpolated(0.375, 0.0).values, (std::vector{0.125f, 0.75f, 0.125f}));
    EXPECT_EQ(grid.interpolated(0.0, 1.0).values, (std::vector{0.0f, 1.0f, 0.0f}));
    EXPECT_EQ(grid.interpolated(1.0, 0.0).values, (std::vector{0.5f, 0.0f, 0.5f}));
}

TEST(KernelGrid, InterpolatedKernelsHaveSumOne) {
    const KernelGrid grid({row({1.0f}), row({0.2f, 0.3f, 0.5f}), row({0.1f, 0.9f, 0.0f}),
                           column({0.25f, 0.5f, 0.25f})},
                          2, 2);
    for (const double place : {0.1, 0.4, 0.5, 0.7}) {
        const Kernel kernel = grid.interpolated(place, 1.0 - place);
        EXPECT_EQ(kernel.width, 3);
        EXPECT_EQ(kernel.height, 3);
        EXPECT_NEAR(std::accumulate(kernel.values.begin(), kernel.values.end(), 0.0), 1.0, 1e-6);
    }
}

TEST(KernelGrid, TheShareOfTheRestorationChangesLinearlyBetweenTheMiddles) {
    std::vector<Kernel> kernels(4, row({1.0f}));
    const float shares[] = {0.2f, 0.6f, 1.0f, 0.0f};
    for (std::size_t i = 0; i < kernels.size(); ++i) {
        kernels[i].trust.share = shares[i];
    }
    const KernelGrid grid(std::move(kernels), 2, 2);
    EXPECT_FLOAT_EQ(grid.interpolated(0.0, 0.0).trust.share, 0.2f);
    EXPECT_FLOAT_EQ(grid.interpolated(0.375, 0.25).trust.share, 0.3f);
    EXPECT_FLOAT_EQ(grid.interpolated(0.25, 0.5).trust.share, 0.6f);
    EXPECT_FLOAT_EQ(grid.interpolated(0.5, 0.5).trust.share, 0.45f);
}

TEST(KernelGrid, TheTypicalKernelIsNearestToTheMean) {
    const KernelGrid grid(
        {row({0.0f, 1.0f, 0.0f}), row({0.3f, 0.4f, 0.3f}), row({0.35f, 0.35f, 0.3f})}, 3, 1);
    EXPECT_EQ(grid.typical().values, (std::vector{0.3f, 0.4f, 0.3f}));
    EXPECT_FALSE(grid.isUniform());
    EXPECT_TRUE(KernelGrid({row({1.0f}), row({1.0f})}, 1, 2).isUniform());
}

} // namespace
} // namespace restoration
