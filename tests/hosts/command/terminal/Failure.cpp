#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>

namespace {

using velorn::onOneLine;

TEST(Failure, LinesOfAMessageAreJoined) {
    EXPECT_EQ(onOneLine("first\nsecond"), "first second");
    EXPECT_EQ(onOneLine("  first  \r\n\r\n  second \n"), "first second");
    EXPECT_EQ(onOneLine("a  b"), "a  b");
}

TEST(Failure, EmptyMessagesStayEmpty) {
    EXPECT_EQ(onOneLine(""), "");
    EXPECT_EQ(onOneLine(" \n\t\n"), "");
}

TEST(Failure, FileNamesAreQuoted) {
    EXPECT_EQ(velorn::quoted("a folder/a b.png"), "'a folder/a b.png'");
}

TEST(Failure, OnlyFilesWithAnEndAreReadable) {
    EXPECT_NO_THROW(velorn::checkReadable("/proc/self/no such file"));
    EXPECT_NO_THROW(velorn::checkReadable(VELORN_PROGRAM));
    EXPECT_THROW(velorn::checkReadable("/dev/zero"), velorn::Failure);
    EXPECT_THROW(velorn::checkReadable("/dev"), velorn::Failure);
}

} // namespace
