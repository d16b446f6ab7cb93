#include "hosts/command/arguments/shellWord.h"

#include "tests/support/RunProgram.h"

#include <gtest/gtest.h>

namespace {

TEST(ShellWord, PlainTextStaysAsItIs) {
    EXPECT_EQ(velorn::shellWord("/a/b-c_1.jpg"), "/a/b-c_1.jpg");
    EXPECT_EQ(velorn::shellWord("0.3,1.2"), "0.3,1.2");
}

TEST(ShellWord, IsOneWordForAShell) {
    for (const char* text : {"", "a b", "it's", "$HOME", "a\\b", "`x`", "*", "\"", "a;b", "~", "''",
                             "two\nlines", "\xc3\xa4"}) {
        const auto result =
            vel::test::runProgram({"/bin/sh", "-c", "printf '<%s>' " + velorn::shellWord(text)});
        EXPECT_EQ(result.output, "<" + std::string(text) + ">");
    }
}

} // namespace
