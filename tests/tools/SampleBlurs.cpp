#include "SampleBlurs.h"

#include "hosts/command/kernels/BlurKernel.h"
#include "KernelLikeness.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::tools::pathKernel;
using velorn::tools::PathPoint;

TEST(SampleBlurs, CurvedShakeIsCentredNormalisedAndUneven) {
    BlurKernel shake = velorn::tools::curvedShake();
    double sum = 0.0;
    double right = 0.0;
    double down = 0.0;
    for (int r = 0; r < shake.height; ++r) {
        for (int c = 0; c < shake.width; ++c) {
            const auto weight = static_cast<double>(shake.at(r, c));
            sum += weight;
            right += weight * (c - shake.width / 2);
            down += weight * (r - shake.height / 2);
        }
    }
    EXPECT_NEAR(sum, 1.0, 1e-5);
    // The path's faint end is cut off at the sides, which moves the centre slightly.
    EXPECT_NEAR(right, 0.0, 0.05);
    EXPECT_NEAR(down, 0.0, 0.05);
    EXPECT_EQ(shake.largerSide(), 13);
    const BlurKernel original = shake;
    std::ranges::reverse(shake.weights);
    EXPECT_LT(velorn::tools::likeness(shake, original), 0.95);
}

TEST(SampleBlurs, HorizontalPathDistributesItsTimeEvenly) {
    constexpr std::array<PathPoint, 2> kPath{{{-2.0, 0.0, 1.0}, {2.0, 0.0, 1.0}}};
    const BlurKernel kernel = pathKernel(kPath, 7);
    for (int c = 2; c <= 4; ++c) {
        EXPECT_NEAR(kernel.at(3, c), 0.25f, 1e-3f);
    }
    EXPECT_NEAR(kernel.at(3, 1), 0.125f, 1e-3f);
    EXPECT_EQ(kernel.at(2, 3), 0.0f);
}

} // namespace
