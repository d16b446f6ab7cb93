#include "restoration/boundary/lastMessage.h"

#include <gtest/gtest.h>
#include <string>

namespace restoration {
namespace {

TEST(LastMessage, IsStoredUntilItIsCleared) {
    storeMessage("no memory");
    EXPECT_STREQ(lastMessage(), "no memory");
    storeMessage("none");
    EXPECT_STREQ(lastMessage(), "none");
    clearMessage();
    EXPECT_STREQ(lastMessage(), "");
}

TEST(LastMessage, LongMessagesAreCut) {
    storeMessage(std::string(10000, 'x'));
    EXPECT_EQ(lastMessage(), std::string(511, 'x'));
    clearMessage();
}

} // namespace
} // namespace restoration
