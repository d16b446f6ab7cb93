#include "hosts/command/files/OutputFile.h"

#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/Interrupt.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using vel::test::bytesOfFile;
using vel::test::TemporaryFolder;
using velorn::Failure;
using velorn::OutputFile;

const std::vector<unsigned char> kContent{'n', 'e', 'w'};

/// Calls `work` while the standard output is `path`.
template <class Work>
void writingTo(const std::filesystem::path& path, const Work& work) {
    const int former = dup(STDOUT_FILENO);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0600);
    dup2(file, STDOUT_FILENO);
    close(file);
    work();
    dup2(former, STDOUT_FILENO);
    close(former);
}

TEST(OutputFile, FilesAreReplacedByCommit) {
    const TemporaryFolder folder;
    OutputFile file(folder / "a.png");
    file.write(kContent);
    EXPECT_FALSE(std::filesystem::exists(folder / "a.png"));
    file.commit();
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kContent);
}

TEST(OutputFile, NewFilesReplaceNone) {
    const TemporaryFolder folder;
    for (const bool isFirst : {true, false}) {
        OutputFile file(folder / "a.png");
        file.write(kContent);
        if (isFirst) {
            file.commitNew();
        } else {
            EXPECT_THROW(file.commitNew(), Failure);
        }
    }
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST(OutputFile, DashIsTheStandardOutput) {
    const TemporaryFolder folder;
    writingTo(folder / "out", [] {
        OutputFile file("-");
        file.write(kContent);
        file.commit();
        file.commitNew();
    });
    EXPECT_EQ(bytesOfFile(folder / "out"), kContent);
    EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST(OutputFile, StandardOutputThatNobodyReadsIsAnInterruption) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const auto former = std::signal(SIGPIPE, SIG_IGN);
    int signal = 0;
    writingTo("/dev/null", [&] {
        dup2(ends[1], STDOUT_FILENO);
        try {
            OutputFile("-").write(kContent);
        } catch (const velorn::Interrupted& interrupted) {
            signal = interrupted.signal();
        }
    });
    std::signal(SIGPIPE, former);
    close(ends[1]);
    EXPECT_EQ(signal, SIGPIPE);
}

TEST(OutputFile, StandardOutputThatIsFullIsAFailure) {
    std::string text;
    writingTo("/dev/full",
              [&] { text = vel::test::failureText([] { OutputFile("-").write(kContent); }); });
    EXPECT_EQ(text, "cannot write to the standard output: No space left on device");
}

} // namespace
