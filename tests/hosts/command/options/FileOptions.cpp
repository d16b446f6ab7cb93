#include "hosts/command/options/FileOptions.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;
using velorn::Subsampling;

CommandWords withBlur(CommandWords words) {
    words.insert(words.begin(), {"deblur", "in.png", "out.png", "--disc", "2"});
    return words;
}

velorn::FileSettings settings(CommandWords words) {
    return vel::test::parsedAs<velorn::DeblurOptions>(withBlur(std::move(words))).files;
}

TEST(FileOptions, SourceDecidesByDefault) {
    const velorn::FileSettings plain = settings({});
    EXPECT_EQ(plain.encoding.subsampling, std::nullopt);
    EXPECT_EQ(plain.encoding.bits, std::nullopt);
    EXPECT_EQ(plain.encoding.quality, std::nullopt);
    EXPECT_EQ(plain.maxPixels, 400000000u);
}

TEST(FileOptions, EachSettingHasItsOption) {
    EXPECT_EQ(settings({"--subsampling", "422"}).encoding.subsampling, Subsampling::half);
    EXPECT_EQ(settings({"--subsampling", "420"}).encoding.subsampling, Subsampling::quarter);
    EXPECT_EQ(settings({"--depth", "16"}).encoding.bits, 16);
    EXPECT_EQ(settings({"--max-pixels", "1000"}).maxPixels, 1000u);
}

TEST(FileOptions, OtherValuesAreRefused) {
    for (const CommandWords& words : std::vector<CommandWords>{{"--subsampling", "411"},
                                                               {"--depth", "12"},
                                                               {"--max-pixels", "0"},
                                                               {"--max-pixels", "nan"}}) {
        EXPECT_NE(vel::test::usageFailureOf(withBlur(words)).find(std::string(words[0])),
                  std::string::npos);
    }
}

} // namespace
