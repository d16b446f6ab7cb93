#include "hosts/command/options/EstimateOptions.h"

#include "tests/hosts/command/options/parsedCommand.h"

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
    EXPECT_EQ(options.sheet, "");
    EXPECT_FALSE(options.blind.look.has_value());
    EXPECT_FALSE(options.blind.start.has_value());
    EXPECT_EQ(options.blind.candidate, 1);
    EXPECT_FALSE(options.blind.isStrict);
}

TEST(EstimateOptions, OutputIsOptional) {
    const auto options = vel::test::parsedAs<EstimateOptions>({"estimate", "in.png"});
    EXPECT_EQ(options.input, "in.png");
    EXPECT_EQ(options.output, "");
}

TEST(EstimateOptions, SheetIsAnotherFileThanTheKernel) {
    EXPECT_EQ(estimate({"--sheet", "s.png"}).sheet, "s.png");
    EXPECT_EQ(estimateFailure({"--sheet", "k.png"}), "--output and --sheet name the same file");
}

TEST(EstimateOptions, ChoicesAreStored) {
    const auto blind =
        estimate({"--look", "10,20,300,200", "--start", "g.txt", "--candidate", "3", "--strict"})
            .blind;
    EXPECT_EQ(blind.look.value(), (velorn::PictureArea{10, 20, 300, 200}));
    EXPECT_EQ(blind.start.value(), "g.txt");
    EXPECT_EQ(blind.candidate, 3);
    EXPECT_TRUE(blind.isStrict);
}

TEST(EstimateOptions, ChoicesOutOfRangeAreRefused) {
    EXPECT_EQ(estimateFailure({"--candidate", "0"}), "--candidate must be from 1 to 32");
    EXPECT_EQ(estimateFailure({"--look", "-1,0,50,50"}), "--look: X and Y must be at least 0");
    EXPECT_EQ(estimateFailure({"--look", "0,0,50,31"}),
              "--look: W and H must be at least 32 pixels");
    EXPECT_NE(estimateFailure({"--look", "0,0,50"}), "");
    EXPECT_NE(estimateFailure({"--look", "0,0,50,50,1"}), "");
    EXPECT_NE(estimateFailure({"--look", "0,0,50,1e9"}), "");
    EXPECT_EQ(estimateFailure({"--start", "g.txt", "--size", "9"}),
              "--start and a size exclude each other: the kernel in the file decides");
}

TEST(EstimateOptions, SizeIsOneSideOrTwo) {
    const EstimateOptions square = estimate({"--size", "17"});
    EXPECT_EQ(square.blind.largest.value().width, 17);
    EXPECT_EQ(square.blind.largest.value().height, 17);
    const EstimateOptions oblong = estimate({"--size", "21x9"});
    EXPECT_EQ(oblong.blind.largest.value().width, 21);
    EXPECT_EQ(oblong.blind.largest.value().height, 9);
}

TEST(EstimateOptions, ThreadsAreLimited) {
    EXPECT_EQ(estimate({}).blind.threads, 0);
    EXPECT_EQ(estimate({"--threads", "3"}).blind.threads, 3);
    EXPECT_EQ(estimateFailure({"--threads", "257"}), "--threads must be from 0 to 256");
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
    EXPECT_EQ(estimateFailure({"--turn", "left"}), "--turn must be yes, no or auto, not 'left'");
}

} // namespace
