#include "hosts/command/options/KernelOptions.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::parsedAs;
using vel::test::usageFailureOf;
using velorn::KernelOptions;
using Shape = velorn::AnalyticBlur::Shape;

TEST(KernelOptions, EachShapeTakesItsNumbersAndAnOutput) {
    const auto motion = parsedAs<KernelOptions>({"kernel", "motion", "12", "-30", "-o", "k.png"});
    EXPECT_EQ(motion.blur.shape, Shape::Motion);
    EXPECT_EQ(motion.blur.extent, 12.0f);
    EXPECT_EQ(motion.blur.angle, -30.0f);
    EXPECT_EQ(motion.output, "k.png");
    const auto disc = parsedAs<KernelOptions>({"kernel", "disc", "3", "--output", "k.txt"});
    EXPECT_EQ(disc.blur.shape, Shape::Disc);
    EXPECT_EQ(disc.blur.extent, 3.0f);
    const auto gaussian = parsedAs<KernelOptions>({"kernel", "gaussian", "-o", "k.txt", "1.25"});
    EXPECT_EQ(gaussian.blur.shape, Shape::Gaussian);
    EXPECT_EQ(gaussian.blur.extent, 1.25f);
}

TEST(KernelOptions, NumbersOutOfRangeAreRefusedWithTheRange) {
    EXPECT_EQ(usageFailureOf({"kernel", "disc", "501", "-o", "k.png"}),
              "disc must be from 0.1 to 255 pixels");
    EXPECT_EQ(usageFailureOf({"kernel", "motion", "5", "361", "-o", "k.png"}),
              "motion: the angle must be from -360 to 360 degrees");
}

TEST(KernelOptions, LargestExtentsHaveKernels) {
    using velorn::AnalyticBlur;
    for (const AnalyticBlur& blur : {AnalyticBlur{AnalyticBlur::Shape::Gaussian, 85.0f, 0.0f},
                                     AnalyticBlur{AnalyticBlur::Shape::Disc, 255.0f, 0.0f},
                                     AnalyticBlur{AnalyticBlur::Shape::Motion, 510.0f, 0.0f}}) {
        EXPECT_GT(velorn::makeKernel(blur).largerSide(), 508);
    }
}

} // namespace
