#include "hosts/command/kernels/kernelText.h"

#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::blurText;
using velorn::percentText;
using velorn::shownAngle;

/// A kernel of 5 by 7 whose weights above 0 lie in two columns and three rows.
BlurKernel kernel() {
    BlurKernel kernel{5, 7, std::vector<float>(35)};
    kernel.weights[1 * 5 + 2] = 0.5f;
    kernel.weights[3 * 5 + 3] = 0.5f;
    return kernel;
}

std::string textOf(int kind, float extent, float angle = 0.0f, int orientation = 1) {
    VelornFindReport report{};
    report.kind = kind;
    report.extent = extent;
    report.angle = angle;
    return blurText(report, kernel(), orientation);
}

TEST(KernelText, NamesTheBlur) {
    EXPECT_EQ(textOf(VELORN_KIND_NONE, 0.0f), "not blurred");
    EXPECT_EQ(textOf(VELORN_KIND_GAUSSIAN, 1.52f), "Gaussian of about 1.5 pixels");
    EXPECT_EQ(textOf(VELORN_KIND_DISC, 3.37f), "out of focus, radius about 3.4 pixels");
    EXPECT_EQ(textOf(VELORN_KIND_MOTION, 14.4f, 31.6f), "motion of about 14 pixels at 32 degrees");
    EXPECT_EQ(textOf(VELORN_KIND_FREE, 3.0f), "camera shake within 2 by 3 pixels");
}

TEST(KernelText, LengthsHaveTwoDigitsOrMore) {
    EXPECT_EQ(textOf(VELORN_KIND_DISC, 9.94f), "out of focus, radius about 9.9 pixels");
    EXPECT_EQ(textOf(VELORN_KIND_DISC, 9.96f), "out of focus, radius about 10 pixels");
}

TEST(KernelText, AnglesAreFromZeroToBelowAHalfTurn) {
    EXPECT_EQ(textOf(VELORN_KIND_MOTION, 20.0f, -30.0f),
              "motion of about 20 pixels at 150 degrees");
    EXPECT_EQ(textOf(VELORN_KIND_MOTION, 20.0f, -0.2f), "motion of about 20 pixels at 0 degrees");
    EXPECT_EQ(textOf(VELORN_KIND_MOTION, 20.0f, 1.0f), "motion of about 20 pixels at 1 degree");
}

TEST(KernelText, AnglesReferToThePictureAsDisplayed) {
    EXPECT_NEAR(shownAngle(30.0, 1), 30.0, 1e-9);
    EXPECT_NEAR(shownAngle(30.0, 2), 150.0, 1e-9); // mirrored from left to right
    EXPECT_NEAR(shownAngle(30.0, 3), 30.0, 1e-9);  // a half turn
    EXPECT_NEAR(shownAngle(30.0, 4), 150.0, 1e-9); // mirrored from top to bottom
    EXPECT_NEAR(shownAngle(30.0, 6), 120.0, 1e-9); // quarter turns
    EXPECT_NEAR(shownAngle(30.0, 8), 120.0, 1e-9);
    EXPECT_NEAR(shownAngle(30.0, 5), 60.0, 1e-9); // mirrored at the diagonal from the top left
    EXPECT_EQ(textOf(VELORN_KIND_MOTION, 20.0f, 30.0f, 6),
              "motion of about 20 pixels at 120 degrees");
}

TEST(KernelText, SharesArePercents) {
    EXPECT_EQ(percentText(0.0f), "0 %");
    EXPECT_EQ(percentText(0.834f), "83 %");
    EXPECT_EQ(percentText(1.0f), "100 %");
}

} // namespace
