#include "hosts/command/blind/KernelCentre.h"

#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::centred;

TEST(KernelCentre, SingleWeightMovesToTheMiddle) {
    const BlurKernel corner{5, 3, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}};
    const BlurKernel middle{5, 3, {0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}};
    EXPECT_EQ(centred(corner).weights, middle.weights);
    EXPECT_EQ(centred(middle).weights, middle.weights);
}

TEST(KernelCentre, ShiftIsTheNearestWholeNumberOfPixels) {
    // The centre of mass is 1.4 columns to the right of the middle.
    const BlurKernel uneven{5, 1, {0.0f, 0.0f, 0.2f, 0.2f, 0.6f}};
    EXPECT_EQ(centred(uneven).weights, (std::vector<float>{0.0f, 0.2f, 0.2f, 0.6f, 0.0f}));
}

TEST(KernelCentre, ShiftStopsWhereAWeightWouldBeLost) {
    const BlurKernel wide{5, 1, {0.1f, 0.0f, 0.0f, 0.1f, 0.8f}};
    EXPECT_EQ(centred(wide).weights, wide.weights);
    const BlurKernel narrow{5, 1, {0.0f, 0.1f, 0.0f, 0.0f, 0.9f}};
    EXPECT_EQ(centred(narrow).weights, (std::vector<float>{0.1f, 0.0f, 0.0f, 0.9f, 0.0f}));
}

TEST(KernelCentre, SymmetricKernelIsUnchanged) {
    const BlurKernel disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});
    EXPECT_EQ(centred(disc).weights, disc.weights);
}

} // namespace
