#include "hosts/command/terminal/timeText.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

std::string text(double seconds) {
    return velorn::timeText(std::chrono::duration<double>(seconds));
}

TEST(TimeText, UnitFitsTheTime) {
    EXPECT_EQ(text(0.42), "0.4 s");
    EXPECT_EQ(text(0.96), "1 s");
    EXPECT_EQ(text(31.2), "31 s");
    EXPECT_EQ(text(99.6), "2 min");
    EXPECT_EQ(text(12 * 60.0 + 20), "12 min");
    EXPECT_EQ(text(3 * 3600.0 + 20 * 60), "3 h 20 min");
}

TEST(TimeText, ImpossibleTimesAreCut) {
    EXPECT_EQ(text(-1.0), "0.0 s");
    EXPECT_EQ(text(std::numeric_limits<double>::infinity()), "277777 h 47 min");
}

} // namespace
