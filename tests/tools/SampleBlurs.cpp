#include "SampleBlurs.h"

#include "hosts/command/kernels/BlurKernel.h"
#include "KernelLikeness.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::tools::NamedBlur;
using velorn::tools::pathKernel;
using velorn::tools::PathPoint;

void expectCentredAndNormalised(const NamedBlur& blur) {
    double sum = 0.0;
    double right = 0.0;
    double down = 0.0;
    for (int r = 0; r < blur.kernel.height; ++r) {
        for (int c = 0; c < blur.kernel.width; ++c) {
            const auto weight = static_cast<double>(blur.kernel.at(r, c));
            sum += weight;
            right += weight * (c - blur.kernel.width / 2);
            down += weight * (r - blur.kernel.height / 2);
        }
    }
    EXPECT_NEAR(sum, 1.0, 1e-5) << blur.name;
    // The path's faint end is cut off at the sides, which moves the centre slightly.
    EXPECT_NEAR(right, 0.0, 0.05) << blur.name;
    EXPECT_NEAR(down, 0.0, 0.05) << blur.name;
}

TEST(SampleBlurs, AreCentredNormalisedAndAtMostThirteenPixelsWide) {
    for (const auto& blurs : {velorn::tools::studiedBlurs(), velorn::tools::unevenBlurs()}) {
        for (const NamedBlur& blur : blurs) {
            expectCentredAndNormalised(blur);
            EXPECT_LE(blur.kernel.largerSide(), 13) << blur.name;
        }
    }
}

TEST(SampleBlurs, UnevenBlursChangeUnderRotationByHalfATurn) {
    for (const NamedBlur& blur : velorn::tools::unevenBlurs()) {
        EXPECT_LT(velorn::tools::likeness(velorn::rotatedBy180(blur.kernel), blur.kernel), 0.95)
            << blur.name;
    }
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
