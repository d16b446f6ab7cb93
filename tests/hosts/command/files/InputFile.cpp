#include "hosts/command/files/InputFile.h"

#include "hosts/command/terminal/Failure.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using vel::test::bytesOfFile;
using vel::test::TemporaryFolder;
using vel::test::writeBytes;
using vel::test::writeText;
using velorn::Failure;
using velorn::InputFile;

/// Replaces the standard input by a file.
class StandardInput {
public:
    explicit StandardInput(const std::filesystem::path& path) : m_former(dup(STDIN_FILENO)) {
        const int file = open(path.c_str(), O_RDONLY);
        dup2(file, STDIN_FILENO);
        close(file);
    }
    ~StandardInput() {
        dup2(m_former, STDIN_FILENO);
        close(m_former);
    }
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

private:
    int m_former;
};

std::string failureOf(const std::filesystem::path& path, std::uint64_t mostBytes) {
    return vel::test::failureText([&] { const InputFile file(path, mostBytes); });
}

TEST(InputFile, UsualNamesStay) {
    const InputFile file("folder/a.png");
    EXPECT_EQ(file.openable(), "folder/a.png");
    EXPECT_EQ(file.shown(), "folder/a.png");
}

TEST(InputFile, NamesWithQuestionMarksAndHashesGetANameWithoutThem) {
    const TemporaryFolder folder;
    for (const std::string name : {"a?b=c.png", "a#1.png"}) {
        writeText(folder / name, "content");
        const InputFile file(folder / name);
        EXPECT_EQ(file.openable().string().find_first_of("?#"), std::string::npos);
        EXPECT_EQ(bytesOfFile(file.openable()), bytesOfFile(folder / name));
        EXPECT_EQ(file.shown(), folder / name);
    }
    EXPECT_EQ(failureOf("none?.png", 1), "cannot read 'none?.png': No such file or directory");
}

TEST(InputFile, StandardInputIsReadAsAWhole) {
    const TemporaryFolder folder;
    const std::vector<unsigned char> content(3'000'000, 'x');
    writeBytes(folder / "in", content);
    const StandardInput input(folder / "in");
    const InputFile file("-");
    EXPECT_EQ(bytesOfFile(file.openable()), content);
    EXPECT_EQ(bytesOfFile(file.openable()), content); // a second time
}

TEST(InputFile, StandardInputIsLimited) {
    const TemporaryFolder folder;
    writeText(folder / "in", "1234567");
    writeText(folder / "empty", "");
    {
        const StandardInput input(folder / "in");
        EXPECT_EQ(failureOf("-", 6), "cannot read 'standard input': more than 6 bytes");
    }
    {
        const StandardInput input(folder / "in");
        EXPECT_EQ(failureOf("-", 7), "");
    }
    const StandardInput input(folder / "empty");
    EXPECT_EQ(failureOf("-", 6), "cannot read 'standard input': no bytes");
}

} // namespace
