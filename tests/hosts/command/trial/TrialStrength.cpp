#include "hosts/command/trial/TrialStrength.h"

#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>

namespace {

using velorn::trialStrengths;

TEST(TrialStrength, MultiplesOfTheAutomaticStrengthHaveTwoDigits) {
    const auto strengths = trialStrengths({"auto/9", "auto", "2.5auto", "70auto"});
    ASSERT_EQ(strengths.size(), 4u);
    EXPECT_EQ(strengths[0].valueFor(7067.0f), 790.0f);
    EXPECT_TRUE(strengths[1].isAutomatic());
    EXPECT_EQ(strengths[2].valueFor(7067.0f), 18000.0f);
    EXPECT_EQ(strengths[3].valueFor(7067.0f), 490000.0f);
    EXPECT_EQ(strengths[0].remark(), "1/9 of the automatic strength");
    EXPECT_EQ(strengths[2].remark(), "2.5 times the automatic strength");
}

TEST(TrialStrength, NumbersAreUsedAsTheyAre) {
    const auto strengths = trialStrengths({"1234.5"});
    EXPECT_FALSE(strengths[0].isRelative);
    EXPECT_EQ(strengths[0].valueFor(7067.0f), 1234.5f);
    EXPECT_EQ(strengths[0].remark(), "");
}

TEST(TrialStrength, MultiplesStayInTheRangeOfTheOption) {
    EXPECT_EQ(trialStrengths({"1000auto"})[0].valueFor(7067.0f), 1e6f);
    EXPECT_EQ(trialStrengths({"auto/1000"})[0].valueFor(20.0f), 1.0f);
}

TEST(TrialStrength, UsualStrengthsAreTheAutomaticOneAndTwoOnEitherSide) {
    EXPECT_EQ(velorn::usualStrengths(),
              trialStrengths({"auto/9", "auto/3", "auto", "3auto", "9auto"}));
}

TEST(TrialStrength, OtherTextIsAWrongCommandLine) {
    for (const char* text : {"", "automatic", "auto/", "auto/0", "auto/x", "0.5auto", "nan", "0",
                             "2000000", "auto*3", "-5", "nanauto", "1001auto"}) {
        EXPECT_THROW(trialStrengths({text}), velorn::UsageFailure) << text;
    }
}

} // namespace
