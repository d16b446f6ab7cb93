#include "hosts/command/files/TemporaryFile.h"

#include "hosts/command/files/fileFailures.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using vel::test::bytesOfFile;
using vel::test::TemporaryFolder;
using vel::test::writeText;
using velorn::Failure;
using velorn::TemporaryFile;

const std::vector<unsigned char> kContent{'n', 'e', 'w'};
const std::vector<unsigned char> kFormer{'o', 'l', 'd'};

std::string failureOf(const std::filesystem::path& target) {
    return vel::test::failureText([&] { TemporaryFile file(target); });
}

TEST(TemporaryFile, CommitCreatesTheTargetAndNoOtherFile) {
    const TemporaryFolder folder;
    {
        TemporaryFile file(folder / "a.png");
        file.write(kContent);
        EXPECT_FALSE(std::filesystem::exists(folder / "a.png"));
        file.commit();
    }
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kContent);
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST(TemporaryFile, WithoutCommitTheTargetIsUnchanged) {
    const TemporaryFolder folder;
    writeText(folder / "a.png", "old");
    {
        TemporaryFile file(folder / "a.png");
        file.write(kContent);
    }
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kFormer);
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST(TemporaryFile, NewTargetIsNeverReplaced) {
    const TemporaryFolder folder;
    TemporaryFile file(folder / "a.png");
    file.write(kContent);
    writeText(folder / "a.png", "old"); // another program is faster
    EXPECT_THROW(file.commitNew(), Failure);
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kFormer);
    TemporaryFile other(folder / "b.png");
    other.write(kContent);
    other.commitNew();
    EXPECT_EQ(bytesOfFile(folder / "b.png"), kContent);
}

TEST(TemporaryFile, ReplacedTargetKeepsItsPermissions) {
    const TemporaryFolder folder;
    writeText(folder / "a.png", "old");
    ASSERT_EQ(chmod((folder / "a.png").c_str(), 0640), 0);
    TemporaryFile file(folder / "a.png");
    file.write(kContent);
    file.commit();
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kContent);
    EXPECT_EQ(std::filesystem::status(folder / "a.png").permissions(),
              static_cast<std::filesystem::perms>(0640));
}

TEST(TemporaryFile, SymbolicLinkPointsToTheReplacedFile) {
    const TemporaryFolder folder;
    writeText(folder / "a.png", "old");
    std::filesystem::create_symlink("a.png", folder / "link.png");
    TemporaryFile file(folder / "link.png");
    file.write(kContent);
    file.commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kContent);
}

TEST(TemporaryFile, DanglingLinksLeadToTheFileThatIsCreated) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "sub");
    std::filesystem::create_symlink("sub/second.png", folder / "first.png");
    std::filesystem::create_symlink("a.png", folder / "sub/second.png");
    TemporaryFile file(folder / "first.png");
    file.write(kContent);
    file.commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "first.png"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "sub/second.png"));
    EXPECT_EQ(bytesOfFile(folder / "sub/a.png"), kContent);
}

TEST(TemporaryFile, LinksInACircleAreRefused) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("b.png", folder / "a.png");
    std::filesystem::create_symlink("a.png", folder / "b.png");
    EXPECT_EQ(failureOf(folder / "a.png"), "cannot write " + velorn::quoted(folder / "a.png") +
                                               ": Too many levels of symbolic links");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "a.png"));
}

TEST(TemporaryFile, NameWithoutAFolderRefersToTheCurrentFolder) {
    const TemporaryFolder folder;
    const auto former = std::filesystem::current_path();
    std::filesystem::current_path(folder / "");
    {
        TemporaryFile file("a.png");
        file.write(kContent);
        file.commit();
    }
    std::filesystem::current_path(former);
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kContent);
}

TEST(TemporaryFile, TargetsThatCannotBeWrittenAreRefusedByName) {
    const TemporaryFolder folder;
    EXPECT_EQ(failureOf(folder / "none/a.png"), "cannot write " +
                                                    velorn::quoted(folder / "none/a.png") +
                                                    ": No such file or directory");
    std::filesystem::create_directory(folder / "f.png");
    EXPECT_EQ(failureOf(folder / "f.png"),
              "cannot write " + velorn::quoted(folder / "f.png") + ": it is a folder");
    EXPECT_EQ(failureOf("/dev/full"), "cannot write '/dev/full': not a regular file");
}

TEST(TemporaryFile, FailedWriteLeavesTheTargetUnchangedAndNoOtherFile) {
    const TemporaryFolder folder;
    writeText(folder / "a.png", "old");
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit former {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const struct rlimit narrow { 1000, former.rlim_max };
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &narrow), 0);
    const std::string text = vel::test::failureText([&] {
        TemporaryFile file(folder / "a.png");
        file.write(std::vector<unsigned char>(5000, 'x'));
    });
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, formerHandler);
    EXPECT_EQ(text, "cannot write " + velorn::quoted(folder / "a.png") + ": File too large");
    EXPECT_EQ(bytesOfFile(folder / "a.png"), kFormer);
    EXPECT_EQ(folder.fileCount(), 1u);
}

} // namespace
