#include "restoration/boundary/findSettings.h"

#include "tests/restoration/boundary/failureOf.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

std::string failureWith(std::int32_t VelornFindSettings::*member, std::int32_t value) {
    VelornFindSettings settings = findDefaults();
    settings.*member = value;
    return test::failureOf([&] { checkedSettings(&settings); });
}

TEST(FindSettings, NullGivesTheDefaults) {
    EXPECT_EQ(checkedSettings(nullptr).maxWidth, 0);
}

TEST(FindSettings, IntegersHaveTheirLimits) {
    using S = VelornFindSettings;
    for (const auto member : {&S::maxWidth, &S::maxHeight}) {
        for (const int side : {0, 3, 511}) {
            EXPECT_EQ(failureWith(member, side), "");
        }
    }
    EXPECT_EQ(failureWith(&S::maxWidth, 2), "settings->maxWidth is 2, but must be 3..511");
    EXPECT_EQ(failureWith(&S::maxHeight, 512), "settings->maxHeight is 512, but must be 3..511");
    EXPECT_EQ(failureWith(&S::partSide, 0), "");
    EXPECT_EQ(failureWith(&S::partSide, 64), "");
    EXPECT_EQ(failureWith(&S::partSide, 63), "settings->partSide is 63, but must be at least 64");
    EXPECT_EQ(failureWith(&S::threads, 2), "");
    EXPECT_EQ(failureWith(&S::threads, -1), "settings->threads is -1, but must be at least 0");
}

TEST(FindSettings, UnknownSizesFail) {
    VelornFindSettings settings = findDefaults();
    settings.size = 0;
    EXPECT_NE(test::failureOf([&] { checkedSettings(&settings); }), "");
}

} // namespace
} // namespace restoration
