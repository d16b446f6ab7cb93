#include "hosts/command/arguments/ArgumentParser.h"

#include "hosts/command/terminal/Failure.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using velorn::ArgumentParser;
using velorn::UsageFailure;

class ArgumentParserTest : public testing::Test {
protected:
    bool parse(std::vector<std::string> words) { return m_parser.parse(std::move(words), m_out); }

    ArgumentParser m_parser{"program", "What it does."};
    std::ostringstream m_out;
};

TEST_F(ArgumentParserTest, ValuesOfEveryTypeAreStored) {
    std::filesystem::path path;
    std::string text;
    int integer = 0;
    std::uint32_t seed = 0;
    float number = 0.0f;
    double precise = 0.0;
    bool isSet = false;
    std::vector<std::string> rest;
    m_parser.add("PATH", path, "");
    m_parser.add("REST", rest, "");
    m_parser.add("-t,--text", text, "");
    m_parser.add("--integer", integer, "");
    m_parser.add("--seed", seed, "");
    m_parser.add("--number", number, "");
    m_parser.add("--precise", precise, "");
    m_parser.add("--set", isSet, "");
    EXPECT_TRUE(parse({"a/b", "-t", "word", "--integer", "-3", "--seed=4000000000", "--number",
                       "1.5", "--precise", "0.1", "--set", "c", "d"}));
    EXPECT_EQ(path, "a/b");
    EXPECT_EQ(text, "word");
    EXPECT_EQ(integer, -3);
    EXPECT_EQ(seed, 4000000000u);
    EXPECT_EQ(number, 1.5f);
    EXPECT_EQ(precise, 0.1);
    EXPECT_TRUE(isSet);
    EXPECT_EQ(rest, (std::vector<std::string>{"c", "d"}));
}

TEST_F(ArgumentParserTest, ArgumentsThatAreNotGivenKeepTheirValue) {
    int given = 1;
    int kept = 2;
    const auto first = m_parser.add("--given", given, "");
    const auto second = m_parser.add("--kept", kept, "");
    EXPECT_TRUE(parse({"--given", "7"}));
    EXPECT_TRUE(first.isGiven());
    EXPECT_FALSE(second.isGiven());
    EXPECT_EQ(given, 7);
    EXPECT_EQ(kept, 2);
}

TEST_F(ArgumentParserTest, CommaSeparatedValuesAreCounted) {
    std::vector<int> four;
    std::vector<double> any;
    m_parser.add("--four", four, "").commaSeparated(4);
    m_parser.add("--any", any, "").commaSeparated();
    EXPECT_TRUE(parse({"--four", "1,2,3,4", "--any", "0.5,1"}));
    EXPECT_EQ(four, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(any, (std::vector<double>{0.5, 1.0}));
    EXPECT_THROW(parse({"--four", "1,2,3"}), UsageFailure);
}

TEST_F(ArgumentParserTest, ConditionsAreChecked) {
    int size = 0;
    bool isFine = false;
    std::string name;
    const auto fine = m_parser.add("--fine", isFine, "");
    m_parser.add("--size", size, "").within(1, 9).needs(fine);
    m_parser.add("NAME", name, "").required();
    EXPECT_TRUE(parse({"x", "--size", "9", "--fine"}));
    EXPECT_THROW(parse({"x", "--size", "10", "--fine"}), UsageFailure);
    EXPECT_THROW(parse({"x", "--size", "5"}), UsageFailure);
    EXPECT_THROW(parse({"--size", "5", "--fine"}), UsageFailure);
    EXPECT_THROW(parse({"x", "--other"}), UsageFailure);
    EXPECT_THROW(parse({"x", "y"}), UsageFailure);
}

TEST_F(ArgumentParserTest, OneCommandIsChosenAndRequired) {
    int value = 0;
    ArgumentParser& first = m_parser.addCommand("first", "");
    ArgumentParser& second = m_parser.addCommand("second", "");
    second.add("VALUE", value, "");
    EXPECT_TRUE(parse({"second", "5"}));
    EXPECT_FALSE(first.isChosen());
    EXPECT_TRUE(second.isChosen());
    EXPECT_EQ(value, 5);
    EXPECT_THROW(parse({}), UsageFailure);
    EXPECT_THROW(parse({"third"}), UsageFailure);
}

TEST_F(ArgumentParserTest, HelpShowsDescriptionsPlaceholdersAndDefaults) {
    int size = 12;
    m_parser.add("--size", size, "How large\nit is.").valueName("N").showDefault();
    EXPECT_FALSE(parse({"--help"}));
    EXPECT_NE(m_out.str().find("What it does."), std::string::npos) << m_out.str();
    EXPECT_NE(m_out.str().find("  --size N (default: 12)\n        How large\n        it is.\n"),
              std::string::npos)
        << m_out.str();
}

TEST_F(ArgumentParserTest, UsageShowsRequiredOptions) {
    std::string output;
    m_parser.add("-o,--output", output, "").required().valueName("FILE");
    EXPECT_FALSE(parse({"--help"}));
    EXPECT_NE(m_out.str().find("Usage: program -o FILE [OPTIONS]"), std::string::npos)
        << m_out.str();
}

TEST_F(ArgumentParserTest, VersionIsPrinted) {
    m_parser.setVersion("program 1.2");
    EXPECT_FALSE(parse({"--version"}));
    EXPECT_EQ(m_out.str(), "program 1.2\n");
}

} // namespace
