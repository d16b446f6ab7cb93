#include "hosts/command/terminal/errorLine.h"

#include <gtest/gtest.h>

namespace {

using velorn::errorLine;
using velorn::printable;
using velorn::shortened;

TEST(ErrorLine, NamesTheProgramAndHasOneLine) {
    EXPECT_EQ(errorLine("cannot read:\n  no file\n"), "velorn: cannot read: no file");
}

TEST(ErrorLine, HasAtMostThreeHundredCharactersWithBothEndsKept) {
    const std::string line = errorLine("begin" + std::string(5000, 'x') + "end");
    EXPECT_EQ(line.size(), 300u);
    EXPECT_EQ(line.substr(0, 14), "velorn: beginx");
    EXPECT_EQ(line.substr(line.size() - 4), "xend");
}

TEST(Printable, ControlCharactersAndInvalidBytesBecomeQuestionMarks) {
    EXPECT_EQ(printable("a\x1b[31mb\x07\x7f"), "a?[31mb??");
    EXPECT_EQ(printable("\xc2\x9b"), "??"); // U+009B begins a terminal's sequence
    EXPECT_EQ(printable("caf\xe9"), "caf?");
    EXPECT_EQ(printable("\xe2\x82"), "??");
    EXPECT_EQ(printable("Gr\xc3\xbc\xc3\x9f \xe2\x82\xac \xf0\x9f\x93\xb7"),
              "Gr\xc3\xbc\xc3\x9f \xe2\x82\xac \xf0\x9f\x93\xb7");
}

TEST(Shortened, TextsWithinTheLimitStay) {
    EXPECT_EQ(shortened("abcdefg", 7), "abcdefg");
    EXPECT_EQ(shortened("abcdefgh", 7), "ab...gh");
    EXPECT_EQ(shortened("", 3), "");
}

TEST(Shortened, CountsAndKeepsWholeCharacters) {
    const std::string u = "\xc3\xbc";
    EXPECT_EQ(shortened(u + u + u + u + u, 5), u + u + u + u + u);
    EXPECT_EQ(shortened(u + u + u + u + u + u, 5), u + "..." + u);
}

} // namespace
