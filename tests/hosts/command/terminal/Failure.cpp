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

} // namespace
