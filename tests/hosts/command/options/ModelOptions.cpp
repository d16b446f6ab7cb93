#include "hosts/command/options/ModelOptions.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;

CommandWords withBlur(CommandWords words) {
    words.insert(words.begin(), {"deblur", "in.png", "out.png", "--disc", "2"});
    return words;
}

VelornRestoreSettings settings(CommandWords words) {
    return vel::test::parsedAs<velorn::DeblurOptions>(withBlur(std::move(words))).settings;
}

std::string failureOf(CommandWords words) {
    return vel::test::usageFailureOf(withBlur(std::move(words)));
}

TEST(ModelOptions, DefaultsAreThoseOfTheLibrary) {
    const VelornRestoreSettings defaults = velorn::api::restoreSettings();
    const VelornRestoreSettings plain = settings({});
    EXPECT_EQ(plain.quality, defaults.quality);
    EXPECT_EQ(plain.light, defaults.light);
    EXPECT_EQ(plain.recoverClipped, defaults.recoverClipped);
    EXPECT_EQ(plain.continueFrame, defaults.continueFrame);
    EXPECT_EQ(plain.threads, defaults.threads);
}

TEST(ModelOptions, EachSettingHasItsOption) {
    EXPECT_EQ(settings({"--quality", "best"}).quality, VELORN_QUALITY_BEST);
    EXPECT_EQ(settings({"--quality", "fast"}).quality, VELORN_QUALITY_FAST);
    EXPECT_EQ(settings({"--light", "linear"}).light, VELORN_LIGHT_LINEAR);
    EXPECT_EQ(settings({"--light", "display"}).light, VELORN_LIGHT_DISPLAY);
    EXPECT_EQ(settings({"--keep-clipped"}).recoverClipped, 0);
    EXPECT_EQ(settings({"--frame-passes", "0"}).continueFrame, 0);
    EXPECT_EQ(settings({"--frame-passes", "8"}).continueFrame, 1);
    EXPECT_EQ(settings({"--threads", "3"}).threads, 3);
}

TEST(ModelOptions, StrengthAndExponentOfTheUserTurnTheSecondPassOff) {
    EXPECT_EQ(settings({"--lambda", "5000"}).quality, VELORN_QUALITY_FAST);
    EXPECT_EQ(settings({"--alpha", "0.7"}).quality, VELORN_QUALITY_FAST);
    EXPECT_EQ(settings({"--preset", "motion"}).quality, VELORN_QUALITY_FAST);
    EXPECT_EQ(settings({"--preset", "crisp"}).quality, VELORN_QUALITY_NORMAL);
    EXPECT_EQ(settings({"--lambda", "5000", "--quality", "normal"}).quality, VELORN_QUALITY_NORMAL);
}

TEST(ModelOptions, OtherNamesAndNumbersAreRefused) {
    EXPECT_EQ(failureOf({"--light", "dark"}),
              "--light must be auto, linear or display, not 'dark'");
    EXPECT_EQ(failureOf({"--frame-passes", "9"}), "--frame-passes must be from 0 to 8");
    EXPECT_EQ(failureOf({"--threads", "-1"}), "--threads must be from 0 to 256");
}

TEST(ModelOptions, HelpShowsEveryOptionWithItsDefault) {
    const std::string help = vel::test::printedBy({"deblur", "--help"});
    for (const char* text : {"--quality NAME|N\n        fast, normal or best, default: normal, or "
                             "fast with --lambda or --alpha",
                             "--light NAME\n        auto, linear or display, default: auto",
                             "--keep-clipped", "--frame-passes N\n        0..8, default: 2",
                             "--threads N\n        0..256, default: one for each processor"}) {
        EXPECT_NE(help.find(text), std::string::npos) << text << "\n" << help;
    }
}

} // namespace
