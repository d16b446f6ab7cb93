#include "hosts/command/files/standardStreams.h"

#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>

namespace {

using velorn::checkStandardInput;
using velorn::shownInput;
using velorn::shownOutput;
using velorn::UsageFailure;

TEST(StandardStreamNames, OnlyDashAloneIsAStream) {
    EXPECT_TRUE(velorn::isStandardStream("-"));
    for (const char* name : {"", "./-", "-.png", "--", "a/-"}) {
        EXPECT_FALSE(velorn::isStandardStream(name)) << name;
        EXPECT_EQ(shownInput(name), name);
        EXPECT_EQ(shownOutput(name), name);
    }
    EXPECT_EQ(shownInput("-"), "standard input");
    EXPECT_EQ(shownOutput("-"), "standard output");
}

TEST(StandardStreamNames, StandardInputIsReadOnce) {
    EXPECT_NO_THROW(checkStandardInput({"-", "./-", "", ""}));
    EXPECT_THROW(checkStandardInput({"a.png", "-", "b.png", "-"}), UsageFailure);
}

} // namespace
