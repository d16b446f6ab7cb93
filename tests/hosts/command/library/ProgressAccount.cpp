#include "hosts/command/library/ProgressAccount.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using velorn::partOf;
using velorn::ProgressAccount;
using velorn::ProgressFunction;

TEST(ProgressAccount, RecordPassesProgressAndTheAnswerOn) {
    std::vector<int> seen;
    ProgressAccount account([&](int current, int limit) {
        seen = {current, limit};
        return current < 5;
    });
    ProgressRecord* record = account.record();
    EXPECT_NE(record->callback(4, 10, record->userData), 0);
    EXPECT_EQ(seen, (std::vector<int>{4, 10}));
    EXPECT_EQ(record->callback(5, 10, record->userData), 0);
    EXPECT_GT(record->total, 0);
    EXPECT_EQ(record->current, 0);
}

TEST(ProgressAccount, PartReportsBetweenItsShares) {
    double share = 0.0;
    const ProgressFunction whole = [&](int current, int limit) {
        share = static_cast<double>(current) / limit;
        return share < 0.6;
    };
    const ProgressFunction part = partOf(whole, 0.25, 0.75);
    EXPECT_TRUE(part(0, 8));
    EXPECT_NEAR(share, 0.25, 1e-6);
    EXPECT_TRUE(part(4, 8));
    EXPECT_NEAR(share, 0.5, 1e-6);
    EXPECT_FALSE(part(8, 8));
    EXPECT_NEAR(share, 0.75, 1e-6);
}

} // namespace
