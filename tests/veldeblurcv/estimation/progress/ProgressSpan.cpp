#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"

#include <gtest/gtest.h>
#include <limits>
#include <utility>
#include <vector>

namespace {

using vel::CProgressSpan;

struct Calls {
    std::vector<std::pair<int32_t, int32_t>> made;
    int32_t answer = 7;
};

int32_t remember(int32_t current, int32_t limit, void* userData) {
    auto& calls = *static_cast<Calls*>(userData);
    calls.made.emplace_back(current, limit);
    return calls.answer;
}

ProgressRecord record(Calls& calls, int32_t total, int32_t limit, int32_t current) {
    return {total, limit, remember, &calls, current};
}

using Made = std::vector<std::pair<int32_t, int32_t>>;

TEST(ProgressSpan, BeginCallsBackWithTheCounterPlusOneAndDoesNotStoreIt) {
    Calls calls;
    ProgressRecord account = record(calls, 100, 1000, 40);
    CProgressSpan span(&account);
    EXPECT_EQ(span.begin(0.5f, 9), 5); // 50 / 9 + 0.3 = 5.86
    EXPECT_EQ(account.current, 40);
    EXPECT_EQ(calls.made, (Made{{41, 1000}}));
}

TEST(ProgressSpan, StepsRoundUpFromSevenTenthsOn) {
    Calls calls;
    ProgressRecord account = record(calls, 57, 1000, 0);
    CProgressSpan span(&account);
    EXPECT_EQ(span.begin(1.0f, 10), 6); // 5.7 + 0.3000000119
    account.total = 56;
    EXPECT_EQ(span.begin(1.0f, 10), 5);
    // The summand is the float: 1.69999999 + 0.3 would fall short of 2.
    account.total = 169999999;
    account.limit = 200000000;
    EXPECT_EQ(span.begin(1.0f, 100000000), 2);
}

TEST(ProgressSpan, StepsAreAtLeastOne) {
    Calls calls;
    ProgressRecord account = record(calls, 3, 1000, 0);
    CProgressSpan span(&account);
    EXPECT_EQ(span.begin(1.0f, 100), 1);
    EXPECT_EQ(span.begin(0.0f, 1), 1);
    EXPECT_EQ(span.begin(0.0f, 0), 1);
}

TEST(ProgressSpan, ShareIsTruncatedAndLimited) {
    Calls calls;
    ProgressRecord account = record(calls, 99, 1000, 10);
    {
        CProgressSpan span(&account);
        span.begin(0.5f, 1);
    }
    EXPECT_EQ(account.current, 59); // 10 + trunc(49.5)
    account.limit = 70;
    {
        CProgressSpan span(&account);
        EXPECT_EQ(span.begin(1.0f, 1), 11);
    }
    EXPECT_EQ(account.current, 70);
}

TEST(ProgressSpan, AdvanceMovesByTheStepUpToTheEndAndReturnsTheAnswer) {
    Calls calls;
    ProgressRecord account = record(calls, 10, 100, 0);
    CProgressSpan span(&account);
    ASSERT_EQ(span.begin(1.0f, 3), 3);
    calls.made.clear();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(span.advance(), 7);
    }
    EXPECT_EQ(calls.made, (Made{{3, 100}, {6, 100}, {9, 100}, {10, 100}, {10, 100}}));
}

TEST(ProgressSpan, FinishMovesToTheEndAndReturnsTheAnswer) {
    Calls calls;
    calls.answer = 0;
    ProgressRecord account = record(calls, 10, 100, 5);
    CProgressSpan span(&account);
    span.begin(1.0f, 3);
    calls.made.clear();
    EXPECT_EQ(span.finish(), 0);
    EXPECT_EQ(calls.made, (Made{{15, 100}}));
    EXPECT_EQ(account.current, 15);
}

TEST(ProgressSpan, DestructionLeavesTheCounterAtTheEnd) {
    Calls calls;
    ProgressRecord account = record(calls, 10, 100, 5);
    {
        CProgressSpan span(&account);
        span.begin(1.0f, 3);
        account.current = 2;
    }
    EXPECT_EQ(account.current, 15);
}

TEST(ProgressSpan, WithoutCallbackOrUserDataNothingMoves) {
    for (const bool withCallback : {false, true}) {
        Calls calls;
        ProgressRecord account = record(calls, 10, 100, 5);
        if (withCallback) {
            account.userData = nullptr;
        } else {
            account.callback = nullptr;
        }
        {
            CProgressSpan span(&account);
            EXPECT_EQ(span.begin(1.0f, 3), 0);
            EXPECT_EQ(span.advance(), 1);
            span.beginSub(4);
            EXPECT_EQ(span.advance(), 1);
            span.endSub();
            EXPECT_EQ(span.finish(), 1);
            EXPECT_EQ(account.current, 5);
        }
        EXPECT_EQ(account.current, 5);
        EXPECT_TRUE(calls.made.empty());
    }
}

TEST(ProgressSpan, SpanWithoutARecordIsSilent) {
    CProgressSpan span;
    EXPECT_EQ(span.begin(1.0f, 3), 0);
    EXPECT_EQ(span.advance(), 1);
    span.beginSub(3);
    EXPECT_EQ(span.advance(), 1);
    span.endSub();
    EXPECT_EQ(span.finish(), 1);
}

TEST(ProgressSpan, SplitStepEndsWhereTheWholeStepWould) {
    Calls calls;
    ProgressRecord account = record(calls, 100, 1000, 0);
    CProgressSpan span(&account);
    ASSERT_EQ(span.begin(1.0f, 5), 20);
    span.advance();
    calls.made.clear();
    span.beginSub(3);
    span.advance();
    span.advance();
    EXPECT_EQ(calls.made, (Made{{26, 1000}, {32, 1000}}));
    span.endSub();
    EXPECT_EQ(calls.made.size(), 2U);
    EXPECT_EQ(account.current, 40);
    span.advance();
    EXPECT_EQ(account.current, 60);
}

TEST(ProgressSpan, PartsOfASplitStepAreAtLeastOne) {
    Calls calls;
    ProgressRecord account = record(calls, 4, 1000, 0);
    CProgressSpan span(&account);
    ASSERT_EQ(span.begin(1.0f, 2), 2);
    span.beginSub(100);
    span.advance();
    span.advance();
    span.advance();
    EXPECT_EQ(account.current, 3);
    span.endSub();
    EXPECT_EQ(account.current, 2);
}

TEST(ProgressSpan, ExtremeAccountsStayWithin32Bits) {
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
    Calls calls;
    ProgressRecord account = record(calls, kMost, kMost, kMost);
    {
        CProgressSpan span(&account);
        EXPECT_EQ(span.begin(1.0f, 1), 1);
        span.advance();
        span.beginSub(0);
        span.endSub();
    }
    EXPECT_EQ(account.current, kMost);
    account = record(calls, kLeast, kLeast, kLeast);
    {
        CProgressSpan span(&account);
        span.begin(std::numeric_limits<float>::infinity(), 0);
        span.advance();
        span.begin(std::numeric_limits<float>::quiet_NaN(), -1);
        span.advance();
    }
    EXPECT_EQ(account.current, kLeast);
}

} // namespace
