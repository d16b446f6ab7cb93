// Runs the command and ends it, or closes its outputs.
#include "hosts/command/pictures/ImageFile.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>

namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;
using vel::test::bytesOfFile;
using vel::test::ProgramResult;
using vel::test::runOnTerminal;
using vel::test::TemporaryFolder;
using vel::test::writeText;

const std::string kProgram = VELORN_PROGRAM;

/// A writing end of a pipe that nobody reads.
void closeReaderOf(int descriptor) {
    int ends[2];
    if (pipe(ends) == 0) {
        close(ends[0]);
        dup2(ends[1], descriptor);
        close(ends[1]);
    }
}

void expectOneShortLine(const std::string& errors) {
    EXPECT_EQ(std::ranges::count(errors, '\n'), 1) << errors;
    EXPECT_LE(errors.size(), 301u) << errors;
    EXPECT_EQ(errors.substr(0, 8), "velorn: ");
    for (const char c : errors.substr(0, errors.size() - 1)) {
        EXPECT_GE(static_cast<unsigned char>(c), 0x20) << errors;
    }
}

TEST(Signals, EndARestorationWithoutLeavingAFile) {
    const TemporaryFolder folder;
    const std::string in = (folder / "in.png").string();
    const std::string out = (folder / "out.png").string();
    velorn::ImageFile picture(1500, 1200, 1, 8);
    vel::test::writeBytes(in, picture.encode(in));
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        const ProgramResult result =
            runOnTerminal({kProgram, "deblur", in, out, "--disc", "3"}, signal);
        EXPECT_EQ(result.exitStatus, 128 + signal);
        EXPECT_EQ(folder.fileCount(), 1u) << signal;
    }
}

TEST(ClosedPipes, OfTheStandardOutputEndTheCommandQuietly) {
    const TemporaryFolder folder;
    const std::string in = (folder / "in.png").string();
    ImageSpec spec(100, 80, 1, TypeDesc::UINT8);
    vel::test::writePicture(in, spec, vel::test::variedSamples<std::uint8_t>(spec));
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{kProgram, "estimate", in}, {kProgram, "--help"}}) {
        const ProgramResult result =
            vel::test::runProgram(words, [] { closeReaderOf(STDOUT_FILENO); });
        EXPECT_EQ(result.exitStatus, 128 + SIGPIPE);
        EXPECT_EQ(result.errors.find("cannot write"), std::string::npos) << result.errors;
    }
}

TEST(ClosedPipes, OfTheStandardErrorDoNotStopTheWork) {
    const TemporaryFolder folder;
    const std::string out = (folder / "out.png").string();
    const std::string in = (folder / "in.png").string();
    ImageSpec spec(100, 80, 1, TypeDesc::UINT8);
    vel::test::writePicture(in, spec, vel::test::variedSamples<std::uint8_t>(spec));
    const ProgramResult result =
        vel::test::runProgram({kProgram, "deblur", in, out, "--disc", "3", "--verbose"},
                              [] { closeReaderOf(STDERR_FILENO); });
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(folder.fileCount(), 2u);
}

TEST(DanglingLinks, AsOutputCreateTheFileThatTheyPointTo) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("real.txt", folder / "link.txt");
    const ProgramResult result = vel::test::runProgram(
        {kProgram, "kernel", "disc", "2", "-o", (folder / "link.txt").string()});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.txt"));
    EXPECT_FALSE(bytesOfFile(folder / "real.txt").empty());
}

TEST(ErrorLines, AreShortAndHaveNoControlCharacters) {
    const TemporaryFolder folder;
    const std::string longName(5000, 'n');
    const std::string wild = "\x1b[2Jtwo\nlines\xff\x07.png";
    const std::string text = (folder / wild).string();
    const std::string out = (folder / "out.png").string();
    writeText(text, "not a picture");
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"deblur", longName + ".png", out, "--disc", "3"},
             {"deblur", text, out, "--disc", "3"},
             {"deblur", "none.png", text, "--disc", "3"},
             {"deblur", "a.png", "b.png", "--disc", "3", "--preset", longName},
             {"deblur", "a.png", "b.png", "--disc", wild},
             {"deblur", "a.png", "b.png", "--disc", "3", "--" + longName},
             {"kernel", "disc", "2", "-o", "none/" + wild},
             {longName},
             {wild}}) {
        std::vector<std::string> line{kProgram};
        line.insert(line.end(), words.begin(), words.end());
        const ProgramResult result = vel::test::runProgram(line);
        EXPECT_GT(result.exitStatus, 0);
        expectOneShortLine(result.errors);
    }
}

} // namespace
