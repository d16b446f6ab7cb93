#include "KernelLikeness.h"

#include "hosts/command/kernels/BlurKernel.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::tools::likeness;

const BlurKernel kUneven{3, 3, {0.5f, 0.3f, 0.0f, 0.0f, 0.2f, 0.0f, 0.0f, 0.0f, 0.0f}};

TEST(KernelLikeness, IsOneForEqualShapesOfAnyPositionSizeAndScale) {
    const BlurKernel moved{5,
                           3,
                           {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, //
                            0.0f, 0.0f, 1.0f, 0.6f, 0.0f, //
                            0.0f, 0.0f, 0.0f, 0.4f, 0.0f}};
    EXPECT_NEAR(likeness(kUneven, moved), 1.0, 1e-6);
}

TEST(KernelLikeness, IsTheCorrelationAtTheBestShift) {
    const BlurKernel pair{3, 1, {0.5f, 0.5f, 0.0f}};
    EXPECT_NEAR(likeness(BlurKernel{1, 1, {1.0f}}, pair), std::sqrt(0.5), 1e-6);
}

TEST(KernelLikeness, RotationByHalfATurnCounts) {
    BlurKernel turned = kUneven;
    std::ranges::reverse(turned.weights);
    EXPECT_LT(likeness(turned, kUneven), 0.95);
}

} // namespace
