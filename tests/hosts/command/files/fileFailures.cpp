#include "hosts/command/files/fileFailures.h"

#include "tests/hosts/command/failureText.h"

#include <gtest/gtest.h>

namespace {

using velorn::Failure;
using velorn::naming;

TEST(FileFailures, NamesAreQuoted) {
    EXPECT_EQ(velorn::quoted("a folder/a b.png"), "'a folder/a b.png'");
}

TEST(FileFailures, MessagesNameTheFileAndTheReason) {
    EXPECT_STREQ(velorn::cannotRead("a.png", "why").what(), "cannot read 'a.png': why");
    EXPECT_STREQ(velorn::cannotWrite("a.png", "why").what(), "cannot write 'a.png': why");
    EXPECT_STREQ(velorn::failureIn("a.png", "why").what(), "'a.png': why");
}

TEST(FileFailures, NamingReturnsTheResultOfTheWork) {
    EXPECT_EQ(naming("a.png", [] { return 7; }), 7);
}

TEST(FileFailures, NamingAddsTheFileToAFailure) {
    EXPECT_EQ(vel::test::failureText([] { naming("a.png", [] { throw Failure("why"); }); }),
              "'a.png': why");
}

} // namespace
