#include "hosts/command/terminal/SilencedErrors.h"

#include <gtest/gtest.h>
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

} // namespace
