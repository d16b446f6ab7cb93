#include "hosts/command/terminal/standardDescriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

TEST(StandardDescriptors, ReaderOfAPipeMayBeGone) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_FALSE(velorn::isReaderGone(ends[1]));
    close(ends[0]);
    EXPECT_TRUE(velorn::isReaderGone(ends[1]));
    close(ends[1]);
}

TEST(StandardDescriptors, FilesHaveNoReaderToLose) {
    const int full = open("/dev/full", O_WRONLY);
    EXPECT_FALSE(velorn::isReaderGone(full));
    close(full);
}

TEST(StandardDescriptors, ClosedInputIsReservedAndCannotBeRead) {
    const int former = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    velorn::reserveStandardDescriptors();
    char byte = 0;
    EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1);
    EXPECT_EQ(read(STDIN_FILENO, &byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
    dup2(former, STDIN_FILENO);
    close(former);
}

} // namespace
