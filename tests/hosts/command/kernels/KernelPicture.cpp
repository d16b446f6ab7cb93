#include "hosts/command/kernels/KernelPicture.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::kernelPicture;

TEST(KernelPicture, ShadesFollowTheShareOfThePeak) {
    const BlurKernel kernel{5, 1, {0.0f, 0.1f, 0.2f, 0.3f, 0.4f}};
    EXPECT_EQ(kernelPicture(kernel), "  ░░▒▒▓▓██\n");
}

TEST(KernelPicture, RowsAreLines) {
    const BlurKernel kernel{1, 3, {0.0f, 1.0f, 0.0f}};
    EXPECT_EQ(kernelPicture(kernel), "  \n██\n  \n");
}

TEST(KernelPicture, LargeKernelsAreShownSmaller) {
    BlurKernel kernel{63, 63, std::vector<float>(63 * 63, 1.0f / (63 * 63))};
    const std::string text = kernelPicture(kernel);
    EXPECT_EQ(std::ranges::count(text, '\n'), 21);
}

TEST(KernelPicture, WeightsOfAFewPercentShowAndFainterOnesDoNot) {
    const BlurKernel kernel{3, 1, {0.01f, 0.98f, 0.01f}};
    EXPECT_EQ(kernelPicture(kernel), "  ██  \n");
    const BlurKernel fainter{3, 1, {0.05f, 0.9f, 0.05f}};
    EXPECT_EQ(kernelPicture(fainter), "░░██░░\n");
}

TEST(KernelPicture, KernelOfZerosIsBlank) {
    EXPECT_EQ(kernelPicture({1, 1, {0.0f}}), "  \n");
}

} // namespace
