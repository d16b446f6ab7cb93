#include "hosts/command/files/openForReading.h"

#include "hosts/command/files/fileFailures.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <iterator>

namespace {

using vel::test::TemporaryFolder;
using velorn::Failure;
using velorn::openForReading;
using velorn::quoted;

std::string failureOf(const std::filesystem::path& path) {
    return vel::test::failureText([&] { openForReading(path); });
}

TEST(OpenForReading, BytesOfAFileAreRead) {
    const TemporaryFolder folder;
    vel::test::writeText(folder / "a", "one\r\ntwo");
    std::ifstream file = openForReading(folder / "a");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "one\r\ntwo");
}

TEST(OpenForReading, MissingFilesFoldersAndDevicesAreRefusedByName) {
    const TemporaryFolder folder;
    EXPECT_EQ(failureOf(folder / "none"),
              "cannot read " + quoted(folder / "none") + ": No such file or directory");
    EXPECT_EQ(failureOf("/dev"), "cannot read '/dev': it is a folder");
    EXPECT_EQ(failureOf("/dev/zero"), "cannot read '/dev/zero': not a regular file");
}

} // namespace
