#include "hosts/command/options/DeblurOptions.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;
using vel::test::parsedAs;
using vel::test::printedBy;
using vel::test::usageFailureOf;
using velorn::AnalyticBlur;
using velorn::BlindSettings;
using velorn::DeblurOptions;
using velorn::KernelPath;
using Shape = velorn::AnalyticBlur::Shape;

CommandWords withFiles(CommandWords words) {
    words.insert(words.begin(), {"deblur", "in.png", "out.tif"});
    return words;
}

DeblurOptions deblur(CommandWords words) {
    return parsedAs<DeblurOptions>(withFiles(std::move(words)));
}

std::string deblurFailure(CommandWords words) {
    return usageFailureOf(withFiles(std::move(words)));
}

TEST(DeblurOptions, DeblurTakesInputOutputAndABlur) {
    const DeblurOptions options = deblur({"--gaussian", "1.5"});
    EXPECT_EQ(options.input, "in.png");
    EXPECT_EQ(options.output, "out.tif");
    const auto blur = std::get<AnalyticBlur>(options.kernel);
    EXPECT_EQ(blur.shape, Shape::Gaussian);
    EXPECT_EQ(blur.extent, 1.5f);
    EXPECT_EQ(options.settings.strength, VELORN_AUTOMATIC);
    EXPECT_FALSE(options.isVerbose);
    EXPECT_TRUE(deblur({"--gaussian", "1.5", "-v"}).isVerbose);
}

TEST(DeblurOptions, EachBlurHasItsOption) {
    const auto disc = std::get<AnalyticBlur>(deblur({"--disc", "4"}).kernel);
    EXPECT_EQ(disc.shape, Shape::Disc);
    EXPECT_EQ(disc.extent, 4.0f);
    const auto motion = std::get<AnalyticBlur>(deblur({"--motion", "12,-30.5"}).kernel);
    EXPECT_EQ(motion.shape, Shape::Motion);
    EXPECT_EQ(motion.extent, 12.0f);
    EXPECT_EQ(motion.angle, -30.5f);
    const auto kernel = std::get<KernelPath>(deblur({"--kernel", "k.txt"}).kernel);
    EXPECT_EQ(kernel.path, "k.txt");
    EXPECT_FALSE(kernel.scale.has_value());
    EXPECT_EQ(
        std::get<KernelPath>(deblur({"--kernel", "k.png", "--kernel-scale", "9"}).kernel).scale, 9);
}

TEST(DeblurOptions, BlurMayPrecedeTheFiles) {
    const auto options = parsedAs<DeblurOptions>({"deblur", "--motion", "12,30", "a.png", "b.png"});
    EXPECT_EQ(options.input, "a.png");
    EXPECT_EQ(options.output, "b.png");
}

TEST(DeblurOptions, NoDeconvolveNeedsNoBlur) {
    const DeblurOptions options = deblur({"--no-deconvolve", "--edge-gain", "2"});
    EXPECT_TRUE(std::holds_alternative<std::monostate>(options.kernel));
    EXPECT_EQ(options.settings.edgeGain, 2.0f);
}

TEST(DeblurOptions, NoneAndMoreThanOneBlurAreRefused) {
    const std::string message = "deblur needs exactly one of --gaussian, --disc, --motion, "
                                "--kernel, --blind and --no-deconvolve";
    EXPECT_EQ(deblurFailure({}), message);
    EXPECT_EQ(deblurFailure({"--disc", "2", "--gaussian", "1"}), message);
    EXPECT_EQ(deblurFailure({"--disc", "2", "--no-deconvolve"}), message);
    EXPECT_EQ(deblurFailure({"--blind", "9", "--disc", "3"}), message);
}

TEST(DeblurOptions, NumbersOutOfRangeAreRefusedWithTheRange) {
    EXPECT_EQ(deblurFailure({"--kernel", "k.png", "--kernel-scale", "0"}),
              "--kernel-scale must be from 1 to 511");
    EXPECT_EQ(deblurFailure({"--disc", "0"}), "--disc must be from 0.1 to 255 pixels");
    EXPECT_EQ(deblurFailure({"--gaussian", "-1"}), "--gaussian must be from 0.1 to 85 pixels");
    EXPECT_EQ(deblurFailure({"--motion", "0.5,0"}), "--motion must be from 1 to 510 pixels");
    EXPECT_EQ(deblurFailure({"--motion", "5,nan"}),
              "--motion: the angle must be from -360 to 360 degrees");
}

TEST(DeblurOptions, BlindTakesASizeAndATurn) {
    const auto blind = std::get<BlindSettings>(deblur({"--blind", "15"}).kernel);
    EXPECT_EQ(blind.largest.value().width, 15);
    EXPECT_EQ(blind.turn, velorn::Turn::Auto);
    const auto turned = std::get<BlindSettings>(deblur({"--blind", "9x7", "--turn", "no"}).kernel);
    EXPECT_EQ(turned.largest.value().height, 7);
    EXPECT_EQ(turned.turn, velorn::Turn::No);
    EXPECT_EQ(deblurFailure({"--disc", "3", "--turn", "no"}), "--turn requires --blind");
    EXPECT_EQ(deblurFailure({"--blind", "8"}),
              "--blind must be one or two odd numbers in 3..511, such as 15 or 15x9");
}

TEST(DeblurOptions, BlindWithoutASizeLeavesItToThePicture) {
    const auto blindSize = [](CommandWords words) {
        const auto options = parsedAs<DeblurOptions>(std::move(words));
        EXPECT_EQ(options.input, "in.png");
        EXPECT_EQ(options.output, "2.png");
        return std::get<BlindSettings>(options.kernel).largest;
    };
    EXPECT_FALSE(blindSize({"deblur", "in.png", "2.png", "--blind"}).has_value());
    EXPECT_FALSE(blindSize({"deblur", "in.png", "--blind", "2.png"}).has_value());
    EXPECT_FALSE(blindSize({"deblur", "--blind", "in.png", "2.png", "--turn", "no"}).has_value());
    EXPECT_EQ(blindSize({"deblur", "--blind", "9x7", "in.png", "2.png"}).value().width, 9);
    EXPECT_EQ(blindSize({"deblur", "--blind=9", "in.png", "2.png"}).value().width, 9);
}

TEST(DeblurOptions, ChoicesAmongKernelsNeedBlind) {
    const auto blind = std::get<BlindSettings>(
        deblur({"--blind", "--look", "1,2,40,50", "--candidate", "2", "--strict", "--start", "g"})
            .kernel);
    EXPECT_EQ(blind.look.value(), (velorn::PictureArea{1, 2, 40, 50}));
    EXPECT_EQ(blind.candidate, 2);
    EXPECT_TRUE(blind.isStrict);
    EXPECT_EQ(blind.start.value(), "g");
    EXPECT_EQ(deblurFailure({"--disc", "3", "--candidate", "2"}), "--candidate requires --blind");
    EXPECT_EQ(deblurFailure({"--disc", "3", "--strict"}), "--strict requires --blind");
    EXPECT_EQ(deblurFailure({"--disc", "3", "--look", "1,2,40,50"}), "--look requires --blind");
    EXPECT_EQ(deblurFailure({"--disc", "3", "--start", "g"}), "--start requires --blind");
    EXPECT_NE(deblurFailure({"--blind", "9", "--start", "g"}), "");
}

TEST(DeblurOptions, LocalNeedsBlindAndExcludesCandidates) {
    const auto blind = std::get<BlindSettings>(
        deblur({"--blind", "9", "--local", "--strict", "--threads", "3"}).kernel);
    EXPECT_TRUE(blind.isLocal);
    EXPECT_TRUE(blind.isStrict);
    EXPECT_EQ(blind.largest.value().width, 9);
    EXPECT_EQ(blind.threads, 3);
    EXPECT_FALSE(std::get<BlindSettings>(deblur({"--blind"}).kernel).isLocal);
    EXPECT_EQ(deblurFailure({"--disc", "3", "--local"}), "--local requires --blind");
    EXPECT_EQ(deblurFailure({"--blind", "--local", "--candidate", "1"}),
              "--local and --candidate exclude each other: a candidate is a kernel for the whole "
              "picture");
}

TEST(DeblurOptions, HelpShowsEveryBlurWithItsRange) {
    const std::string help = printedBy({"deblur", "--help"});
    for (const char* text :
         {"--gaussian SIGMA\n        pixels, 0.1..85\n",
          "--disc RADIUS\n        pixels, 0.1..255\n",
          "--motion LENGTH,ANGLE\n        pixels, 1..510; degrees, -360..360\n", "--kernel FILE",
          "--blind [N[xM]]\n        odd numbers, 3..511, default: automatic\n",
          "--no-deconvolve"}) {
        EXPECT_NE(help.find(text), std::string::npos) << text << "\n" << help;
    }
}

} // namespace
