#include "hosts/command/blind/KernelSpecks.h"

#include <gtest/gtest.h>
#include <numeric>

namespace {

using velorn::BlurKernel;
using velorn::withoutSpecks;
using Weights = std::vector<float>;

TEST(KernelSpecks, FaintWeightsAreRemovedAndTheRestSumsToOne) {
    const BlurKernel kernel{5, 1, {0.05f, 0.25f, 0.4f, 0.25f, 0.05f}};
    const Weights kept = withoutSpecks(kernel).weights;
    EXPECT_EQ(kept[0], 0.0f);
    EXPECT_EQ(kept[4], 0.0f);
    EXPECT_NEAR(kept[2] / kept[1], 0.4f / 0.25f, 1e-6f);
    EXPECT_NEAR(std::accumulate(kept.begin(), kept.end(), 0.0), 1.0, 1e-6);
}

TEST(KernelSpecks, LightPatchApartFromTheBlurIsRemoved) {
    BlurKernel kernel{7, 7, Weights(49, 0.0f)};
    for (const int i : {0, 1, 7, 8, 9, 15, 16, 17, 23, 24, 25}) {
        kernel.weights[static_cast<std::size_t>(i)] = 1.0f / 11.25f;
    }
    kernel.weights[48] = 0.25f / 11.25f;
    EXPECT_EQ(withoutSpecks(kernel).weights[48], 0.0f);
}

TEST(KernelSpecks, HeavyPatchIsKept) {
    BlurKernel kernel{7, 7, Weights(49, 0.0f)};
    kernel.weights[0] = 0.7f;
    kernel.weights[48] = 0.3f;
    EXPECT_EQ(withoutSpecks(kernel).weights, kernel.weights);
}

TEST(KernelSpecks, WeightsThatTouchAtCornersFormOnePatch) {
    BlurKernel kernel{5, 5, Weights(25, 0.0f)};
    // A diagonal line that fades: its end has a small share of the mass, but is no speck.
    const Weights line{1.0f, 1.0f, 1.0f, 1.0f, 0.3f};
    for (std::size_t i = 0; i < 5; ++i) {
        kernel.weights[i * 6] = line[i] / 4.3f;
    }
    EXPECT_EQ(withoutSpecks(kernel).weights, kernel.weights);
}

TEST(KernelSpecks, SingleWeightIsKept) {
    EXPECT_EQ(withoutSpecks(velorn::pointKernel()).weights, velorn::pointKernel().weights);
}

} // namespace
