#include "hosts/command/commands/SettingOptions.h"

#include "hosts/command/commands/Options.h"
#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using velorn::RestorationSettings;
using velorn::UsageFailure;

velorn::DeblurOptions deblur(const std::vector<const char*>& words) {
    std::vector<const char*> line{"velorn", "deblur", "--disc", "2"};
    line.insert(line.end(), words.begin(), words.end());
    line.insert(line.end(), {"in.png", "out.png"});
    std::ostringstream out;
    auto command =
        velorn::parseCommandLine(static_cast<int>(line.size()), line.data(), out).value();
    return std::get<velorn::DeblurOptions>(command);
}

RestorationSettings settings(const std::vector<const char*>& words) {
    return deblur(words).settings;
}

std::string complaint(const std::vector<const char*>& words) {
    try {
        deblur(words);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return "";
}

TEST(SettingOptions, WithoutAnyThePictureIsRestoredAndNeitherSharpenedNorEnhanced) {
    const RestorationSettings plain = settings({});
    EXPECT_EQ(plain.alpha, 0.5f);
    EXPECT_EQ(plain.limit, 0.5f);
    EXPECT_EQ(plain.edgeSlope, 0.0f);
    EXPECT_EQ(plain.edgeGain, 1.0f);
    EXPECT_EQ(plain.detailGain, 0.0f);
    EXPECT_EQ(plain.detailGamma, 0.0f);
    EXPECT_FALSE(deblur({}).lambdaIsGiven);
}

TEST(SettingOptions, EachSettingHasItsOption) {
    const auto given =
        settings({"--lambda", "2000", "--alpha", "0.7", "--limit", "0.3", "--edge-radius", "1.5",
                  "--edge-slope", "2", "--edge-gain", "3", "--edge-floor", "0.02", "--detail-gain",
                  "-0.5", "--detail-gamma", "0.25"});
    EXPECT_EQ(given.lambda, 2000.0f);
    EXPECT_EQ(given.alpha, 0.7f);
    EXPECT_EQ(given.limit, 0.3f);
    EXPECT_EQ(given.edgeRadius, 1.5f);
    EXPECT_EQ(given.edgeSlope, 2.0f);
    EXPECT_EQ(given.edgeGain, 3.0f);
    EXPECT_EQ(given.edgeFloor, 0.02f);
    EXPECT_EQ(given.detailGain, -0.5f);
    EXPECT_EQ(given.detailGamma, 0.25f);
    EXPECT_TRUE(deblur({"--lambda", "2000"}).lambdaIsGiven);
}

TEST(SettingOptions, SharpenAndDetailGiveSeveralSettingsAtOnce) {
    const auto two = settings({"--sharpen", "2,1.5", "--detail", "0.4"});
    EXPECT_EQ(two.edgeSlope, 2.0f);
    EXPECT_EQ(two.edgeGain, 1.5f);
    EXPECT_EQ(two.edgeRadius, RestorationSettings().edgeRadius);
    EXPECT_EQ(two.detailGain, 0.4f);
    EXPECT_EQ(two.detailGamma, 0.0f);
    const auto all = settings({"--sharpen=2,1.5,1.1,0.01", "--detail", "-0.4,0.3"});
    EXPECT_EQ(all.edgeRadius, 1.1f);
    EXPECT_EQ(all.edgeFloor, 0.01f);
    EXPECT_EQ(all.detailGain, -0.4f);
    EXPECT_EQ(all.detailGamma, 0.3f);
}

TEST(SettingOptions, SharpenAndDetailWithoutNumbersDoSomethingGentle) {
    // The last one stands before the files' names, which are no numbers.
    for (const auto& words :
         std::vector<std::vector<const char*>>{{"--sharpen", "--detail"},
                                               {"--detail", "--sharpen"},
                                               {"--detail", "-v", "--sharpen"}}) {
        const auto gentle = settings(words);
        EXPECT_GT(gentle.edgeSlope + gentle.edgeGain, 1.0f);
        EXPECT_LT(gentle.edgeGain, 2.0f);
        EXPECT_GT(gentle.detailGain, 0.01f);
        EXPECT_LT(gentle.detailGain, 0.5f);
    }
}

TEST(SettingOptions, PresetIsReplacedByWhatIsGivenBesides) {
    const auto preset = velorn::presets()[3];
    const auto plain = settings({"--preset", preset.name});
    EXPECT_EQ(plain.edgeSlope, preset.settings.edgeSlope);
    EXPECT_EQ(plain.detailGain, preset.settings.detailGain);
    EXPECT_FALSE(deblur({"--preset", preset.name}).lambdaIsGiven);
    const auto named = settings({"--limit", "0.25", "--preset", preset.name});
    EXPECT_EQ(named.limit, 0.25f);
    EXPECT_EQ(named.detailGain, preset.settings.detailGain);
    const auto combined = settings({"--detail", "0", "--preset", preset.name});
    EXPECT_EQ(combined.detailGain, 0.0f);
    EXPECT_EQ(combined.edgeSlope, preset.settings.edgeSlope);
}

TEST(SettingOptions, SettingGivenTwiceIsRefused) {
    EXPECT_EQ(complaint({"--sharpen", "2,1.5", "--edge-gain", "1.5"}),
              "--sharpen and --edge-gain give the same setting; give only one of them");
    EXPECT_EQ(complaint({"--detail-gain", "1", "--detail"}),
              "--detail and --detail-gain give the same setting; give only one of them");
    EXPECT_EQ(complaint({"--sharpen", "2,1.5", "--edge-radius", "1.5", "--detail", "0.1",
                         "--detail-gamma", "0.1"}),
              "");
}

TEST(SettingOptions, NumbersOutOfRangeAreRefusedWithTheRange) {
    EXPECT_EQ(complaint({"--alpha", "1.5"}), "--alpha must be from 0 to 1");
    EXPECT_EQ(complaint({"--lambda", "0"}), "--lambda must be from 1 to 1000000");
    EXPECT_EQ(complaint({"--limit", "nan"}), "--limit must be from 0 to 1");
    EXPECT_EQ(complaint({"--edge-radius", "0"}), "--edge-radius must be from 0.1 to 10");
    EXPECT_EQ(complaint({"--detail-gain", "-2"}), "--detail-gain must be from -1 to 3");
    EXPECT_EQ(complaint({"--sharpen", "2,11"}), "--sharpen: GAIN must be from 0 to 10");
    EXPECT_EQ(complaint({"--detail", "0.1,nan"}), "--detail: GAMMA must be from -1 to 3");
    EXPECT_EQ(complaint({"--preset", "soft"}), "--preset must be lens, motion, scan or crisp");
}

TEST(SettingOptions, TooFewAndTooManyNumbersAreRefusedWithTheSyntax) {
    EXPECT_EQ(complaint({"--sharpen", "2"}),
              "--sharpen takes numbers: SLOPE,GAIN[,RADIUS[,FLOOR]]");
    EXPECT_EQ(complaint({"--sharpen", "1,1,1,1,1"}),
              "--sharpen takes numbers: SLOPE,GAIN[,RADIUS[,FLOOR]]");
    EXPECT_EQ(complaint({"--detail", "1,1,1"}), "--detail takes numbers: GAIN[,GAMMA]");
    EXPECT_EQ(complaint({"--detail=much"}), "--detail takes numbers: GAIN[,GAMMA]");
}

TEST(SettingOptions, WordsBehindTheEndOfOptionsAreFiles) {
    using Words = std::vector<std::string>;
    EXPECT_EQ(velorn::SettingOptions::completed({"--", "--detail"}), Words({"--", "--detail"}));
    EXPECT_EQ(velorn::SettingOptions::completed({"--detail", "3", "a.png"}),
              Words({"--detail", "3", "a.png"}));
}

TEST(SettingOptions, HelpShowsEverySettingWithRangeAndDefaultAndEveryPreset) {
    const std::vector<const char*> line{"velorn", "deblur", "--help"};
    std::ostringstream out;
    velorn::parseCommandLine(3, line.data(), out);
    for (const char* text : {"--lambda NUMBER\n        1..1000000, default: measured",
                             "--alpha NUMBER\n        0..1, default: 0.5",
                             "--limit NUMBER\n        0..1, default: 0.5",
                             "--edge-radius NUMBER\n        0.1..10, default: 0.85",
                             "--edge-slope NUMBER\n        0..10, default: 0\n",
                             "--edge-gain NUMBER\n        0..10, default: 1\n",
                             "--edge-floor NUMBER\n        0.00001..1, default: 0.005",
                             "--detail-gain NUMBER\n        -1..3, default: 0\n",
                             "--detail-gamma NUMBER\n        -1..3, default: 0\n",
                             "--sharpen [SLOPE,GAIN[,RADIUS[,FLOOR]]]", "--detail [GAIN[,GAMMA]]",
                             "lens, motion, scan or crisp", "= --alpha 0.3"}) {
        EXPECT_NE(out.str().find(text), std::string::npos) << text << "\n" << out.str();
    }
}

} // namespace
