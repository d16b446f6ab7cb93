#include "hosts/command/terminal/SilencedErrors.h"

#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>

namespace {

TEST(SilencedErrors, NothingIsPrintedDuringItsLifetime) {
    testing::internal::CaptureStderr();
    std::fputs("before ", stderr);
    {
        const velorn::SilencedErrors silenced;
        std::fputs("during ", stderr);
        EXPECT_EQ(write(STDERR_FILENO, "too ", 4), 4);
    }
    std::fputs("after", stderr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "before after");
}

TEST(SilencedErrors, StderrReturnsAfterTheLastOfSeveral) {
    testing::internal::CaptureStderr();
    auto first = std::make_unique<velorn::SilencedErrors>();
    auto second = std::make_unique<velorn::SilencedErrors>();
    first.reset();
    std::fputs("during ", stderr);
    second.reset();
    std::fputs("after", stderr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "after");
}

} // namespace
