#include "velimproclib/frame/CallFrame.h"

#include <gtest/gtest.h>
#include <new>
#include <string>

namespace {

using vel::errorText;
using vel::runGuarded;

TEST(CallFrame, SuccessfulBodyGivesItsStatusAndAnEmptyText) {
    EXPECT_EQ(runGuarded([] { return 0; }), 0);
    EXPECT_EQ(runGuarded([] { return 1; }), 1);
    EXPECT_STREQ(errorText(), "");
    EXPECT_FALSE(vel::busyByte().isSet());
}

TEST(CallFrame, TextFailureGivesMinusFiveAndKeepsTheText) {
    const int32_t status = runGuarded([]() -> int32_t { throw "CDeconvHL::setup - m_w != m_h"; });
    EXPECT_EQ(status, -5);
    EXPECT_EQ(std::string(errorText()).substr(0, 29), "CDeconvHL::setup - m_w != m_h");
    EXPECT_FALSE(vel::busyByte().isSet());
}

TEST(CallFrame, IntegerFailureGivesItsDistanceFromMinusThousand) {
    EXPECT_EQ(runGuarded([]() -> int32_t { throw 0; }), -1000);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw 101; }), -899);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw 102; }), -898);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw 103; }), -897);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw 120; }), -880);
    EXPECT_STREQ(errorText(), "");
}

TEST(CallFrame, AnyOtherFailureGivesMinusThousand) {
    EXPECT_EQ(runGuarded([]() -> int32_t { throw std::bad_alloc(); }), -1000);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw 1.5; }), -1000);
    EXPECT_FALSE(vel::busyByte().isSet());
}

TEST(CallFrame, BusyLibraryTurnsCallsAwayAsSuccessWithTheTextCleared) {
    bool innerRan = false;
    const int32_t status = runGuarded([&]() -> int32_t {
        vel::storeErrorText("text of before");
        EXPECT_EQ(runGuarded([&] {
                      innerRan = true;
                      return 0;
                  }),
                  1);
        EXPECT_EQ(errorText()[0], '\0');
        EXPECT_TRUE(vel::busyByte().isSet());
        return 0;
    });
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(innerRan);
}

TEST(CallFrame, ShorterTextKeepsOneStaleCharacterBeforeItsTerminator) {
    vel::storeErrorText("abcdefgh");
    vel::storeErrorText("xyz");
    EXPECT_STREQ(errorText(), "xyzd");
    EXPECT_EQ(std::string(errorText() + 5, 3), "fgh");
}

TEST(CallFrame, OverlongTextIsCutToFourThousandNinetyFourCharacters) {
    vel::storeErrorText(std::string(4094, 'a').c_str());
    const char before = errorText()[4094];
    vel::storeErrorText(std::string(5000, 'b').c_str());
    EXPECT_EQ(errorText()[4093], 'b');
    EXPECT_EQ(errorText()[4094], before);
    EXPECT_EQ(errorText()[4095], '\0');
}

TEST(CallFrame, TextOfFourThousandNinetyFiveCharactersIsCutToo) {
    vel::storeErrorText(std::string(4095, 'c').c_str());
    EXPECT_EQ(errorText()[4093], 'c');
    EXPECT_EQ(errorText()[4095], '\0');
}

} // namespace
