#include "hosts/command/terminal/ProgressBar.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using velorn::ProgressBar;

TEST(ProgressBar, HiddenBarWritesNothing) {
    std::ostringstream terminal;
    {
        ProgressBar bar(terminal, false);
        bar.show(1, 2);
    }
    EXPECT_EQ(terminal.str(), "");
}

TEST(ProgressBar, BarShowsTheShareAndClearsItsLineAtTheEnd) {
    std::ostringstream terminal;
    {
        ProgressBar bar(terminal, true);
        bar.show(1, 2);
        EXPECT_EQ(terminal.str(), "\r[" + std::string(20, '#') + std::string(20, '.') + "]  50%");
    }
    EXPECT_EQ(terminal.str().back(), '\r');
    EXPECT_EQ(terminal.str().find('\n'), std::string::npos);
}

TEST(ProgressBar, BarIsRedrawnOnlyWhenThePercentageChanges) {
    std::ostringstream terminal;
    ProgressBar bar(terminal, true);
    bar.show(500, 1000);
    const std::string once = terminal.str();
    bar.show(501, 1000);
    EXPECT_EQ(terminal.str(), once);
    bar.show(510, 1000);
    EXPECT_NE(terminal.str(), once);
}

TEST(ProgressBar, PercentageIsCutToItsRange) {
    std::ostringstream terminal;
    ProgressBar bar(terminal, true);
    bar.show(2147483647, 1000000);
    EXPECT_NE(terminal.str().find("100%"), std::string::npos);
    bar.show(-5, 100);
    EXPECT_NE(terminal.str().find("  0%"), std::string::npos);
    bar.show(1000001, 1000001);
    EXPECT_EQ(terminal.str().substr(terminal.str().size() - 4), "100%");
    bar.show(5, 0);
    EXPECT_EQ(terminal.str().substr(terminal.str().size() - 4), "  0%");
}

TEST(ProgressBar, NoteFollowsTheShareAndAShorterOneLeavesNoRest) {
    std::ostringstream terminal;
    ProgressBar bar(terminal, true);
    bar.show(1, 2, " 10/20");
    EXPECT_TRUE(terminal.str().ends_with(" 50% 10/20")) << terminal.str();
    bar.show(1, 2, " 9/20");
    EXPECT_TRUE(terminal.str().ends_with(" 50% 9/20 ")) << terminal.str();
}

TEST(ProgressBar, ClearedBarIsDrawnAgain) {
    std::ostringstream terminal;
    ProgressBar bar(terminal, true);
    bar.show(1, 2);
    bar.clear();
    const std::size_t before = terminal.str().size();
    bar.show(1, 2);
    EXPECT_GT(terminal.str().size(), before);
}

} // namespace
