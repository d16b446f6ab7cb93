#include "hosts/command/options/SettingOptions.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;
using velorn::DeblurOptions;

CommandWords withBlur(const CommandWords& words) {
    CommandWords line{"deblur", "--disc", "2"};
    line.insert(line.end(), words.begin(), words.end());
    line.insert(line.end(), {"in.png", "out.png"});
    return line;
}

VelornRestoreSettings settings(const CommandWords& words) {
    return vel::test::parsedAs<DeblurOptions>(withBlur(words)).settings;
}

std::string failureOf(const CommandWords& words) {
    return vel::test::usageFailureOf(withBlur(words));
}

TEST(SettingOptions, DefaultsRestoreWithoutSharpeningAndEnhancement) {
    const VelornRestoreSettings plain = settings({});
    EXPECT_EQ(plain.strength, VELORN_AUTOMATIC);
    EXPECT_EQ(plain.chromaStrength, VELORN_AUTOMATIC);
    EXPECT_EQ(plain.alpha, VELORN_AUTOMATIC);
    EXPECT_EQ(plain.limit, VELORN_AUTOMATIC);
    EXPECT_EQ(plain.noise, VELORN_AUTOMATIC);
    EXPECT_EQ(plain.edgeSlope, 0.0f);
    EXPECT_EQ(plain.edgeGain, 1.0f);
    EXPECT_EQ(plain.detailGain, 0.0f);
    EXPECT_EQ(plain.detailGamma, 0.0f);
}

TEST(SettingOptions, EachSettingHasItsOption) {
    const auto given =
        settings({"--lambda",      "2000", "--chroma-lambda", "50",  "--noise",       "1.25",
                  "--alpha",       "0.7",  "--limit",         "0.3", "--edge-radius", "1.5",
                  "--edge-slope",  "2",    "--edge-gain",     "3",   "--edge-floor",  "0.02",
                  "--detail-gain", "-0.5", "--detail-gamma",  "0.25"});
    EXPECT_EQ(given.strength, 2000.0f);
    EXPECT_EQ(given.chromaStrength, 50.0f);
    EXPECT_EQ(given.noise, 1.25f);
    EXPECT_EQ(given.alpha, 0.7f);
    EXPECT_EQ(given.limit, 0.3f);
    EXPECT_EQ(given.edgeRadius, 1.5f);
    EXPECT_EQ(given.edgeSlope, 2.0f);
    EXPECT_EQ(given.edgeGain, 3.0f);
    EXPECT_EQ(given.edgeFloor, 0.02f);
    EXPECT_EQ(given.detailGain, -0.5f);
    EXPECT_EQ(given.detailGamma, 0.25f);
}

TEST(SettingOptions, SharpenAndDetailSetSeveralSettings) {
    const auto two = settings({"--sharpen", "2,1.5", "--detail", "0.4"});
    EXPECT_EQ(two.edgeSlope, 2.0f);
    EXPECT_EQ(two.edgeGain, 1.5f);
    EXPECT_EQ(two.edgeRadius, settings({}).edgeRadius);
    EXPECT_EQ(two.detailGain, 0.4f);
    EXPECT_EQ(two.detailGamma, 0.0f);
    const auto all = settings({"--sharpen=2,1.5,1.1,0.01", "--detail", "-0.4,0.3"});
    EXPECT_EQ(all.edgeRadius, 1.1f);
    EXPECT_EQ(all.edgeFloor, 0.01f);
    EXPECT_EQ(all.detailGain, -0.4f);
    EXPECT_EQ(all.detailGamma, 0.3f);
}

TEST(SettingOptions, SharpenAndDetailWithoutNumbersUseTheirDefaults) {
    // The last option precedes the names of the files, which are not numbers.
    for (const auto& words : std::vector<CommandWords>{{"--sharpen", "--detail"},
                                                       {"--detail", "--sharpen"},
                                                       {"--detail", "-v", "--sharpen"}}) {
        const auto given = settings(words);
        EXPECT_EQ(given.edgeSlope, 0.3f);
        EXPECT_EQ(given.edgeGain, 1.2f);
        EXPECT_EQ(given.detailGain, 0.15f);
        EXPECT_EQ(given.detailGamma, 0.0f);
    }
}

TEST(SettingOptions, OptionsOverrideThePreset) {
    const auto preset = velorn::presets()[3];
    const auto plain = settings({"--preset", preset.name});
    VelornRestoreSettings expected = settings({});
    preset.applyTo(expected);
    EXPECT_EQ(plain.edgeSlope, expected.edgeSlope);
    EXPECT_EQ(plain.detailGain, expected.detailGain);
    EXPECT_NE(plain.detailGain, settings({}).detailGain);
    EXPECT_EQ(plain.strength, VELORN_AUTOMATIC);
    const auto named = settings({"--limit", "0.25", "--preset", preset.name});
    EXPECT_EQ(named.limit, 0.25f);
    EXPECT_EQ(named.detailGain, expected.detailGain);
    const auto combined = settings({"--detail", "0", "--preset", preset.name});
    EXPECT_EQ(combined.detailGain, 0.0f);
    EXPECT_EQ(combined.edgeSlope, expected.edgeSlope);
}

TEST(SettingOptions, SettingGivenTwiceIsRefused) {
    EXPECT_EQ(failureOf({"--sharpen", "2,1.5", "--edge-gain", "1.5"}),
              "--sharpen and --edge-gain give the same setting; give only one of them");
    EXPECT_EQ(failureOf({"--detail-gain", "1", "--detail"}),
              "--detail and --detail-gain give the same setting; give only one of them");
    EXPECT_EQ(failureOf({"--sharpen", "2,1.5", "--edge-radius", "1.5", "--detail", "0.1",
                         "--detail-gamma", "0.1"}),
              "");
}

TEST(SettingOptions, NumbersOutOfRangeAreRefusedWithTheRange) {
    EXPECT_EQ(failureOf({"--alpha", "1.5"}), "--alpha must be from 0 to 1");
    EXPECT_EQ(failureOf({"--lambda", "0"}), "--lambda must be from 1 to 1000000");
    EXPECT_EQ(failureOf({"--limit", "nan"}), "--limit must be from 0 to 1");
    EXPECT_EQ(failureOf({"--edge-radius", "0"}), "--edge-radius must be from 0.1 to 10");
    EXPECT_EQ(failureOf({"--detail-gain", "-2"}), "--detail-gain must be from -1 to 3");
    EXPECT_EQ(failureOf({"--sharpen", "2,11"}), "--sharpen: GAIN must be from 0 to 10");
    EXPECT_EQ(failureOf({"--detail", "0.1,nan"}), "--detail: GAMMA must be from -1 to 3");
    EXPECT_EQ(failureOf({"--preset", "soft"}),
              "--preset must be lens, motion, scan or crisp, not 'soft'");
}

TEST(SettingOptions, TooFewAndTooManyNumbersAreRefusedWithTheSyntax) {
    EXPECT_EQ(failureOf({"--sharpen", "2"}),
              "--sharpen must be numbers: SLOPE,GAIN[,RADIUS[,FLOOR]]");
    EXPECT_EQ(failureOf({"--sharpen", "1,1,1,1,1"}),
              "--sharpen must be numbers: SLOPE,GAIN[,RADIUS[,FLOOR]]");
    EXPECT_EQ(failureOf({"--detail", "1,1,1"}), "--detail must be numbers: GAIN[,GAMMA]");
    EXPECT_EQ(failureOf({"--detail=much"}), "--detail must be numbers: GAIN[,GAMMA]");
}

TEST(SettingOptions, WordsAfterTwoDashesAreNotCompleted) {
    using Words = std::vector<std::string>;
    EXPECT_EQ(velorn::SettingOptions::completed({"--", "--detail"}), Words({"--", "--detail"}));
    EXPECT_EQ(velorn::SettingOptions::completed({"--detail", "3", "a.png"}),
              Words({"--detail", "3", "a.png"}));
}

TEST(SettingOptions, HelpShowsEverySettingWithRangeAndDefaultAndEveryPreset) {
    const std::string help = vel::test::printedBy({"deblur", "--help"});
    for (const char* text : {"--lambda NUMBER\n        1..1000000, default: automatic",
                             "--chroma-lambda NUMBER\n        0.001..1000000, default: automatic",
                             "--alpha NUMBER\n        0..1, default: automatic",
                             "--limit NUMBER\n        0..1, default: automatic",
                             "--noise NUMBER\n        levels of 255, 0..100, default: automatic",
                             "--edge-radius NUMBER\n        pixels, 0.1..10, default: 0.85",
                             "--edge-slope NUMBER\n        0..10, default: 0\n",
                             "--edge-gain NUMBER\n        0..10, default: 1\n",
                             "--edge-floor NUMBER\n        0.00001..1, default: 0.005",
                             "--detail-gain NUMBER\n        -1..3, default: 0\n",
                             "--detail-gamma NUMBER\n        -1..3, default: 0\n",
                             "--sharpen [SLOPE,GAIN[,RADIUS[,FLOOR]]]", "--detail [GAIN[,GAMMA]]",
                             "lens, motion, scan or crisp", "Equals --alpha 0.3 --limit 0.8."}) {
        EXPECT_NE(help.find(text), std::string::npos) << text << "\n" << help;
    }
}

} // namespace
