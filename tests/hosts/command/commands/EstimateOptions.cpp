#include "hosts/command/commands/EstimateOptions.h"

#include "tests/hosts/command/commands/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;
using velorn::EstimateOptions;

CommandWords withFiles(CommandWords words) {
    words.insert(words.begin(), {"estimate", "in.png", "-o", "k.png"});
    return words;
}

EstimateOptions estimate(CommandWords words) {
    return vel::test::parsedAs<EstimateOptions>(withFiles(std::move(words)));
}

std::string estimateFailure(CommandWords words) {
    return vel::test::usageFailureOf(withFiles(std::move(words)));
}

TEST(EstimateOptions, DefaultsAreThoseOfTheSearch) {
    const EstimateOptions options = estimate({});
    EXPECT_EQ(options.input, "in.png");
    EXPECT_EQ(options.output, "k.png");
    EXPECT_FALSE(options.blind.largest.has_value());
    EXPECT_EQ(options.blind.smoothing, 0.0f);
    EXPECT_EQ(options.blind.turn, velorn::Turn::Auto);
}

TEST(EstimateOptions, SizeIsOneSideOrTwo) {
    const EstimateOptions square = estimate({"--size", "17"});
    EXPECT_EQ(square.blind.largest.value().width, 17);
    EXPECT_EQ(square.blind.largest.value().height, 17);
    const EstimateOptions oblong = estimate({"--size", "21x9"});
    EXPECT_EQ(oblong.blind.largest.value().width, 21);
    EXPECT_EQ(oblong.blind.largest.value().height, 9);
}

TEST(EstimateOptions, StrengthAndTurnAreStored) {
    const EstimateOptions options = estimate({"--strength", "1.5", "--turn", "yes"});
    EXPECT_EQ(options.blind.smoothing, 1.5f);
    EXPECT_EQ(options.blind.turn, velorn::Turn::Yes);
}

TEST(EstimateOptions, SizesThatAreNotOddNumbersInTheRangeAreRefused) {
    for (const char* size : {"", "1", "4", "513", "-3", "9x", "x9", "9x4", "9x9x9", "nine", "9 "}) {
        EXPECT_EQ(estimateFailure({"--size", size}),
                  "--size must be one or two odd numbers in 3..511, such as 15 or 15x9")
            << size;
    }
}

TEST(EstimateOptions, StrengthAndTurnOutOfRangeAreRefused) {
    EXPECT_EQ(estimateFailure({"--strength", "2.1"}), "--strength must be from 0 to 2");
    EXPECT_EQ(estimateFailure({"--turn", "left"}), "--turn must be yes, no or auto");
}

} // namespace
