#include "KernelLikeness.h"

#include "hosts/command/kernels/BlurKernel.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::tools::likeness;
using velorn::tools::likenessEitherWay;

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
    EXPECT_NEAR(likeness(velorn::pointKernel(), pair), std::sqrt(0.5), 1e-6);
}

TEST(KernelLikeness, RotationByHalfATurnCountsExceptInTheSymmetricForm) {
    const BlurKernel turned = velorn::rotatedBy180(kUneven);
    EXPECT_LT(likeness(turned, kUneven), 0.95);
    EXPECT_NEAR(likenessEitherWay(turned, kUneven), 1.0, 1e-6);
}

} // namespace
