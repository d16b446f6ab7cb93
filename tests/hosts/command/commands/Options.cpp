#include "hosts/command/commands/Options.h"

#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using velorn::AnalyticBlur;
using velorn::Command;
using velorn::DeblurOptions;
using velorn::KernelOptions;
using velorn::KernelPath;
using velorn::UsageFailure;
using Shape = velorn::AnalyticBlur::Shape;

std::optional<Command> parse(std::vector<const char*> words, std::string* printed = nullptr) {
    words.insert(words.begin(), "velorn");
    std::ostringstream out;
    auto command = velorn::parseCommandLine(static_cast<int>(words.size()), words.data(), out);
    if (printed != nullptr) {
        *printed = out.str();
    }
    return command;
}

DeblurOptions deblur(std::vector<const char*> words) {
    words.insert(words.begin(), {"deblur", "in.png", "out.tif"});
    return std::get<DeblurOptions>(parse(std::move(words)).value());
}

std::string complaint(std::vector<const char*> words) {
    try {
        parse(std::move(words));
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return "";
}

std::string deblurComplaint(std::vector<const char*> words) {
    words.insert(words.begin(), {"deblur", "in.png", "out.tif"});
    return complaint(std::move(words));
}

TEST(Options, DeblurTakesInputOutputAndABlur) {
    const DeblurOptions options = deblur({"--gaussian", "1.5"});
    EXPECT_EQ(options.input, "in.png");
    EXPECT_EQ(options.output, "out.tif");
    const auto blur = std::get<AnalyticBlur>(options.kernel);
    EXPECT_EQ(blur.shape, Shape::Gaussian);
    EXPECT_EQ(blur.extent, 1.5f);
    EXPECT_TRUE(options.settings.deconvolve);
    EXPECT_FALSE(options.lambdaIsGiven);
}

TEST(Options, EachBlurHasItsOption) {
    const auto disc = std::get<AnalyticBlur>(deblur({"--disc", "4"}).kernel);
    EXPECT_EQ(disc.shape, Shape::Disc);
    EXPECT_EQ(disc.extent, 4.0f);
    const auto motion = std::get<AnalyticBlur>(deblur({"--motion", "12,-30.5"}).kernel);
    EXPECT_EQ(motion.shape, Shape::Motion);
    EXPECT_EQ(motion.extent, 12.0f);
    EXPECT_EQ(motion.angle, -30.5f);
    EXPECT_EQ(std::get<KernelPath>(deblur({"--kernel", "k.txt"}).kernel).path, "k.txt");
    EXPECT_FALSE(std::get<KernelPath>(deblur({"--kernel", "k.txt"}).kernel).scale.has_value());
    EXPECT_EQ(
        std::get<KernelPath>(deblur({"--kernel", "k.png", "--kernel-scale", "9"}).kernel).scale, 9);
}

TEST(Options, BlurMayStandBeforeTheFiles) {
    const auto command = parse({"deblur", "--motion", "12,30", "in.png", "out.png"});
    EXPECT_EQ(std::get<DeblurOptions>(*command).input, "in.png");
    EXPECT_EQ(std::get<DeblurOptions>(*command).output, "out.png");
}

TEST(Options, SharpeningAloneNeedsNoBlur) {
    const DeblurOptions options = deblur({"--no-deconvolve", "--edge-gain", "2"});
    EXPECT_FALSE(options.settings.deconvolve);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(options.kernel));
    EXPECT_EQ(options.settings.edgeGain, 2.0f);
}

TEST(Options, FramePassesHaveADefault) {
    EXPECT_EQ(deblur({"--disc", "2"}).framePasses, 2);
    EXPECT_EQ(deblur({"--disc", "2", "--frame-passes", "0"}).framePasses, 0);
}

TEST(Options, ExactlyOneBlurIsAsked) {
    EXPECT_NE(deblurComplaint({}).find("exactly one of"), std::string::npos);
    EXPECT_NE(deblurComplaint({"--disc", "2", "--gaussian", "1"}).find("exactly one of"),
              std::string::npos);
    EXPECT_NE(deblurComplaint({"--disc", "2", "--no-deconvolve"}).find("exactly one of"),
              std::string::npos);
}

TEST(Options, NumbersOutOfRangeAreRefusedWithTheRange) {
    EXPECT_EQ(deblurComplaint({"--disc", "2", "--frame-passes", "9"}),
              "--frame-passes must be from 0 to 8");
    EXPECT_EQ(deblurComplaint({"--disc", "0"}), "--disc must be from 0.1 to 500 pixels");
    EXPECT_EQ(deblurComplaint({"--gaussian", "-1"}), "--gaussian must be from 0.1 to 500 pixels");
    EXPECT_EQ(deblurComplaint({"--motion", "0.5,0"}), "--motion must be from 1 to 500 pixels");
    EXPECT_NE(deblurComplaint({"--motion", "5,nan"}).find("angle"), std::string::npos);
}

TEST(Options, WrongUsageIsToldInOneLine) {
    for (const auto& words : std::vector<std::vector<const char*>>{
             {},
             {"polish"},
             {"deblur"},
             {"deblur", "in.png"},
             {"deblur", "in.png", "out.png", "--disc"},
             {"deblur", "in.png", "out.png", "--disc", "wide"},
             {"deblur", "in.png", "out.png", "--motion", "5"},
             {"deblur", "in.png", "out.png", "--disc", "2", "--lamda", "7"},
             {"deblur", "in.png", "out.png", "--disc", "2", "--kernel-scale", "7"},
             {"deblur", "in.png", "out.png", "--kernel", "k.png", "--kernel-scale", "0"},
             {"deblur", "in.png", "out.png", "third.png", "--disc", "2"},
             {"kernel"},
             {"kernel", "square", "3", "-o", "k.png"},
             {"kernel", "disc", "3"},
             {"kernel", "disc", "-o", "k.png"},
             {"kernel", "motion", "3", "-o", "k.png"},
             {"kernel", "disc", "900", "-o", "k.png"}}) {
        const std::string text = complaint(words);
        EXPECT_NE(text, "");
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
}

TEST(Options, KernelTakesAShapeItsNumbersAndATarget) {
    const auto motion =
        std::get<KernelOptions>(parse({"kernel", "motion", "12", "-30", "-o", "k.png"}).value());
    EXPECT_EQ(motion.blur.shape, Shape::Motion);
    EXPECT_EQ(motion.blur.extent, 12.0f);
    EXPECT_EQ(motion.blur.angle, -30.0f);
    EXPECT_EQ(motion.output, "k.png");
    const auto disc =
        std::get<KernelOptions>(parse({"kernel", "disc", "3", "--output", "k.txt"}).value());
    EXPECT_EQ(disc.blur.shape, Shape::Disc);
    const auto gaussian =
        std::get<KernelOptions>(parse({"kernel", "gaussian", "-o", "k.txt", "1.25"}).value());
    EXPECT_EQ(gaussian.blur.shape, Shape::Gaussian);
    EXPECT_EQ(gaussian.blur.extent, 1.25f);
}

TEST(Options, VersionAndHelpArePrinted) {
    std::string printed;
    EXPECT_FALSE(parse({"--version"}, &printed).has_value());
    EXPECT_EQ(printed.substr(0, 8), "velorn 1");
    EXPECT_FALSE(parse({"--help"}, &printed).has_value());
    EXPECT_NE(printed.find("deblur"), std::string::npos);
    EXPECT_NE(printed.find("kernel"), std::string::npos);
}

TEST(Options, HelpShowsEveryBlur) {
    std::string printed;
    EXPECT_FALSE(parse({"deblur", "--help"}, &printed).has_value());
    for (const char* text : {"--gaussian SIGMA", "--disc RADIUS", "--motion LENGTH,ANGLE",
                             "--kernel FILE", "--blind [N[xM]]", "--no-deconvolve"}) {
        EXPECT_NE(printed.find(text), std::string::npos) << text << "\n" << printed;
    }
}

velorn::EstimateOptions estimate(std::vector<const char*> words) {
    words.insert(words.begin(), {"estimate", "in.png", "-o", "k.png"});
    return std::get<velorn::EstimateOptions>(parse(std::move(words)).value());
}

std::string estimateComplaint(std::vector<const char*> words) {
    words.insert(words.begin(), {"estimate", "in.png", "-o", "k.png"});
    return complaint(std::move(words));
}

TEST(Options, EstimateTakesASideOrTwo) {
    const auto square = estimate({"--size", "15"});
    EXPECT_EQ(square.input, "in.png");
    EXPECT_EQ(square.output, "k.png");
    EXPECT_EQ(square.blind.size.width, 15);
    EXPECT_EQ(square.blind.size.height, 15);
    EXPECT_EQ(square.blind.turn, velorn::Turn::Auto);
    const auto oblong = estimate({"--size", "21x9", "--strength", "1.5", "--turn", "yes"});
    EXPECT_EQ(oblong.blind.size.width, 21);
    EXPECT_EQ(oblong.blind.size.height, 9);
    EXPECT_EQ(oblong.blind.strength, 1.5f);
    EXPECT_EQ(oblong.blind.turn, velorn::Turn::Yes);
}

TEST(Options, SidesOfUnknownKernelsAreOddAndOfAReasonableSize) {
    for (const char* size : {"", "1", "4", "65", "-3", "9x", "x9", "9x4", "9x9x9", "nine", "9 "}) {
        EXPECT_EQ(estimateComplaint({"--size", size}),
                  "--size must be odd numbers from 3 to 63, like 15 or 15x9")
            << size;
    }
}

TEST(Options, SizeToLookForHasAStandard) {
    EXPECT_EQ(estimate({}).blind.size.width, 15);
    EXPECT_EQ(estimate({}).blind.size.height, 15);
    const auto blindSize = [](std::vector<const char*> words) {
        const auto command = std::get<DeblurOptions>(parse(std::move(words)).value());
        EXPECT_EQ(command.input, "in.png");
        EXPECT_EQ(command.output, "2.png");
        return std::get<velorn::BlindSettings>(command.kernel).size.width;
    };
    EXPECT_EQ(blindSize({"deblur", "in.png", "2.png", "--blind"}), 15);
    EXPECT_EQ(blindSize({"deblur", "in.png", "--blind", "2.png"}), 15);
    EXPECT_EQ(blindSize({"deblur", "--blind", "in.png", "2.png", "--turn", "no"}), 15);
    EXPECT_EQ(blindSize({"deblur", "--blind", "9x7", "in.png", "2.png"}), 9);
    EXPECT_EQ(blindSize({"deblur", "--blind=9", "in.png", "2.png"}), 9);
}

TEST(Options, EstimatesStrengthAndTurnHaveTheirRange) {
    EXPECT_EQ(estimateComplaint({"--size", "9", "--strength", "2.1"}),
              "--strength must be from 0 to 2");
    EXPECT_EQ(estimateComplaint({"--size", "9", "--turn", "left"}),
              "--turn must be yes, no or auto");
}

TEST(Options, BlindIsABlurLikeTheOthers) {
    const auto blind = std::get<velorn::BlindSettings>(deblur({"--blind", "15"}).kernel);
    EXPECT_EQ(blind.size.width, 15);
    const auto turned = deblur({"--blind", "9x7", "--turn", "no"});
    EXPECT_EQ(std::get<velorn::BlindSettings>(turned.kernel).turn, velorn::Turn::No);
    EXPECT_NE(deblurComplaint({"--blind", "9", "--disc", "3"}), "");
    EXPECT_NE(deblurComplaint({"--disc", "3", "--turn", "no"}), "");
    EXPECT_EQ(deblurComplaint({"--blind", "8"}),
              "--blind must be odd numbers from 3 to 63, like 15 or 15x9");
}

TEST(Options, PreviewTakesAScaleAndADisplaysProfile) {
    const auto plain =
        std::get<velorn::PreviewOptions>(parse({"preview", "in.tif", "out.png"}).value());
    EXPECT_EQ(plain.input, "in.tif");
    EXPECT_EQ(plain.output, "out.png");
    EXPECT_EQ(plain.scale, 1.0f);
    EXPECT_FALSE(plain.profile.has_value());
    const auto full = std::get<velorn::PreviewOptions>(
        parse({"preview", "--scale", "0.5", "--profile", "d.icc", "in.tif", "out.png"}).value());
    EXPECT_EQ(full.scale, 0.5f);
    EXPECT_EQ(full.profile, "d.icc");
    for (const char* scale : {"0", "-1", "0.009", "33", "nan", "inf"}) {
        EXPECT_EQ(complaint({"preview", "in.tif", "out.png", "--scale", scale}),
                  "--scale must be from 0.01 to 32");
    }
}

} // namespace
