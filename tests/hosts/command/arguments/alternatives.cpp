#include "hosts/command/arguments/alternatives.h"

#include <gtest/gtest.h>

namespace {

using velorn::alternatives;

TEST(Alternatives, LastNameFollowsOr) {
    EXPECT_EQ(alternatives({}), "");
    EXPECT_EQ(alternatives({"a"}), "a");
    EXPECT_EQ(alternatives({"a", "b"}), "a or b");
    EXPECT_EQ(alternatives({"a", "b", "c"}), "a, b or c");
}

} // namespace
