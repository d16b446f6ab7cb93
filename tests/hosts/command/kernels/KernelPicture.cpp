#include "hosts/command/kernels/KernelPicture.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::kernelPicture;

TEST(KernelPicture, ShadesShowTheWeightsRelativeToTheLargest) {
    const BlurKernel kernel{5, 1, {0.0f, 0.1f, 0.2f, 0.3f, 0.4f}};
    EXPECT_EQ(kernelPicture(kernel), "  ░░▒▒▓▓██\n");
}

TEST(KernelPicture, EachRowIsALine) {
    const BlurKernel kernel{1, 3, {0.0f, 1.0f, 0.0f}};
    EXPECT_EQ(kernelPicture(kernel), "  \n██\n  \n");
}

TEST(KernelPicture, LargeKernelsAreReduced) {
    BlurKernel kernel{63, 63, std::vector<float>(63 * 63, 1.0f / (63 * 63))};
    const std::string text = kernelPicture(kernel);
    EXPECT_EQ(std::ranges::count(text, '\n'), 21);
}

TEST(KernelPicture, WeightsOfAFewPercentAreVisibleAndFainterOnesAreNot) {
    const BlurKernel faint{3, 1, {0.01f, 0.98f, 0.01f}};
    EXPECT_EQ(kernelPicture(faint), "  ██  \n");
    const BlurKernel visible{3, 1, {0.05f, 0.9f, 0.05f}};
    EXPECT_EQ(kernelPicture(visible), "░░██░░\n");
}

TEST(KernelPicture, KernelOfZerosIsBlank) {
    EXPECT_EQ(kernelPicture({1, 1, {0.0f}}), "  \n");
}

} // namespace
