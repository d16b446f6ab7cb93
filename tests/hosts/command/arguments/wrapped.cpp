#include "hosts/command/arguments/wrapped.h"

#include <gtest/gtest.h>

namespace {

using velorn::wrapped;

TEST(Wrapped, LinesBreakBetweenWords) {
    EXPECT_EQ(wrapped("one two three", 7), "one two\nthree\n");
    EXPECT_EQ(wrapped("one two three", 8), "one two\nthree\n");
    EXPECT_EQ(wrapped("one two three", 13), "one two three\n");
}

TEST(Wrapped, LongWordHasALineOfItsOwn) {
    EXPECT_EQ(wrapped("a extraordinary b", 5), "a\nextraordinary\nb\n");
}

TEST(Wrapped, PartsKeepTheIndentationOfTheirLine) {
    EXPECT_EQ(wrapped("head\n  one two three", 9), "head\n  one two\n  three\n");
}

TEST(Wrapped, EmptyTextHasNoLines) {
    EXPECT_EQ(wrapped("", 10), "");
    EXPECT_EQ(wrapped("a\n\nb", 10), "a\n\nb\n");
}

} // namespace
