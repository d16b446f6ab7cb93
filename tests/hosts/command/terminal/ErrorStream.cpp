#include "hosts/command/terminal/ErrorStream.h"

#include "hosts/command/terminal/SilencedErrors.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

TEST(ErrorStream, WritesToStderrAlsoWhileItIsSilenced) {
    testing::internal::CaptureStderr();
    {
        velorn::ErrorStream terminal;
        const velorn::SilencedErrors silenced;
        std::fputs("codec", stderr);
        terminal << "number " << 7 << '\n' << std::flush;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "number 7\n");
}

} // namespace
