#include "hosts/command/commands/CommandLine.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;
using vel::test::printedBy;
using vel::test::usageFailureOf;

TEST(CommandLine, WrongCommandLineGivesAMessageOnOneLine) {
    for (const CommandWords& words : std::vector<CommandWords>{
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
        const std::string text = usageFailureOf(words);
        EXPECT_NE(text, "");
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
}

TEST(CommandLine, MissingCommandIsReportedWithTheChoice) {
    EXPECT_EQ(usageFailureOf({}),
              "missing command: deblur, try, estimate, kernel, preview or completion");
    EXPECT_EQ(usageFailureOf({"kernel"}), "missing command: gaussian, disc or motion");
}

TEST(CommandLine, VersionIsPrinted) {
    EXPECT_EQ(printedBy({"--version"}).substr(0, 8), "velorn 1");
}

TEST(CommandLine, HelpListsTheCommands) {
    const std::string help = printedBy({"--help"});
    for (const char* name : {"\n  deblur ", "\n  try ", "\n  estimate ", "\n  kernel ",
                             "\n  preview ", "\n  completion "}) {
        EXPECT_NE(help.find(name), std::string::npos) << name << "\n" << help;
    }
}

TEST(CommandLine, HelpFitsATerminalOfEightyColumns) {
    for (const CommandWords& words : std::vector<CommandWords>{{"--help"},
                                                               {"deblur", "--help"},
                                                               {"try", "--help"},
                                                               {"estimate", "--help"},
                                                               {"kernel", "--help"},
                                                               {"kernel", "motion", "--help"},
                                                               {"preview", "--help"},
                                                               {"completion", "--help"}}) {
        std::istringstream lines(printedBy(words));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 80u) << line;
        }
    }
}

} // namespace
