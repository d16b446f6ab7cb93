// Runs the command in pipes, and with names that the image library takes apart.
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/ioctl.h>

namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;
using vel::test::bytesOfFile;
using vel::test::ProgramResult;
using vel::test::readPicture;
using vel::test::runProgram;
using vel::test::TemporaryFolder;
using vel::test::writeText;

const std::string kProgram = VELORN_PROGRAM;

class StandardStreams : public testing::Test {
protected:
    StandardStreams() {
        ImageSpec spec(96, 72, 3, TypeDesc::UINT8);
        m_samples = vel::test::variedSamples<std::uint8_t>(spec);
        vel::test::writePicture(at("in.png"), spec, m_samples);
    }

    std::string at(const std::string& name) const { return (m_folder / name).string(); }

    /// Runs the command with files as standard input and output.
    ProgramResult run(std::vector<std::string> words, const std::string& in,
                      const std::string& out = "") {
        words.insert(words.begin(), kProgram);
        return runProgram(words, [&] {
            std::filesystem::current_path(m_folder / "");
            dup2(open(in.c_str(), O_RDONLY), STDIN_FILENO);
            if (!out.empty()) {
                dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
            }
        });
    }

    TemporaryFolder m_folder;
    std::vector<std::uint8_t> m_samples;
};

TEST_F(StandardStreams, DeblurReadsAndWritesThem) {
    ASSERT_EQ(run({"deblur", "in.png", "file.png", "--disc", "2"}, "/dev/null").exitStatus, 0);
    const ProgramResult result =
        run({"deblur", "-", "-", "--format", "png", "--disc", "2"}, at("in.png"), at("out"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(bytesOfFile(at("out")), bytesOfFile(at("file.png")));
    EXPECT_EQ(m_folder.fileCount(), 3u);
}

class WrittenFormats : public StandardStreams, public testing::WithParamInterface<const char*> {};

TEST_P(WrittenFormats, AreReadAgainWithoutAName) {
    ProgramResult result = run({"deblur", "in.png", "-", "--no-deconvolve", "--format", GetParam()},
                               "/dev/null", at("stream"));
    ASSERT_EQ(result.exitStatus, 0) << result.errors;
    result = run({"preview", "-", "back.png"}, at("stream"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    ImageSpec spec;
    readPicture<std::uint8_t>(at("back.png"), spec);
    EXPECT_EQ(spec.width, 96);
}

INSTANTIATE_TEST_SUITE_P(OnStreams, WrittenFormats,
                         testing::Values("jpeg", "png", "tiff", "webp", "pnm", "bmp", "tga", "exr",
                                         "hdr"));

class OnlyReadFormats : public StandardStreams, public testing::WithParamInterface<const char*> {};

TEST_P(OnlyReadFormats, AreReadWithoutAName) {
    const ImageSpec spec(96, 72, 3, TypeDesc::UINT8);
    vel::test::writePicture(at(GetParam()), spec, m_samples);
    const ProgramResult result = run({"preview", "-", "back.png"}, at(GetParam()));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    ImageSpec shown;
    readPicture<std::uint8_t>(at("back.png"), shown);
    EXPECT_EQ(shown.width, 96);
}

INSTANTIATE_TEST_SUITE_P(OnStreams, OnlyReadFormats,
                         testing::Values("a.jp2", "a.gif", "a.sgi", "a.dpx", "a.heic"));

TEST_F(StandardStreams, EstimatePrintsItsReportElsewhereWhenItWritesThere) {
    ProgramResult result = run({"estimate", "-", "-o", "-", "--format", "txt", "--size", "3"},
                               at("in.png"), at("k.txt"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_NE(result.errors.find("confidence:"), std::string::npos);
    EXPECT_EQ(run({"deblur", "in.png", "o.png", "--kernel", "k.txt"}, "/dev/null").exitStatus, 0);
    result = run({"estimate", "-", "--sheet", "-", "--format", "png", "--size", "3"}, at("in.png"),
                 at("sheet.png"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_NE(result.errors.find("confidence:"), std::string::npos);
    ImageSpec spec;
    EXPECT_FALSE(readPicture<std::uint8_t>(at("sheet.png"), spec).empty());
}

TEST_F(StandardStreams, TryPrintsItsLinesElsewhereWhenItWritesTheSheetThere) {
    const std::vector<std::string> words{"try",      "-",           "--disc", "2,3",
                                         "--region", "10,10,40,30", "-o"};
    const auto with = [&](std::vector<std::string> more) {
        more.insert(more.begin(), words.begin(), words.end());
        return more;
    };
    ProgramResult result = run(with({"file.png"}), at("in.png"));
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("velorn deblur - OUT --disc 3  #"), std::string::npos)
        << result.output;
    const std::string lines = result.output;
    result = run(with({"-", "--format", "png"}), at("in.png"), at("stream.png"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(result.errors, lines);
    EXPECT_EQ(bytesOfFile(at("stream.png")), bytesOfFile(at("file.png")));
}

TEST_F(StandardStreams, KernelWritesTextOrAPicture) {
    ProgramResult result = run({"kernel", "disc", "1", "-o", "-", "--format", "txt"}, "/dev/null");
    EXPECT_EQ(std::ranges::count(result.output, '\n'), 3) << result.output;
    result = run({"kernel", "disc", "1", "-o", "-", "--format", "png"}, "/dev/null");
    EXPECT_EQ(result.output.substr(1, 3), "PNG");
}

TEST_F(StandardStreams, KernelsAreReadThere) {
    run({"kernel", "disc", "2", "-o", "-", "--format", "csv"}, "/dev/null", at("kernel"));
    ProgramResult result = run({"deblur", "in.png", "text.png", "--kernel", "-"}, at("kernel"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    run({"deblur", "in.png", "disc.png", "--disc", "2"}, "/dev/null");
    EXPECT_EQ(bytesOfFile(at("text.png")), bytesOfFile(at("disc.png")));
    run({"kernel", "disc", "1", "-o", "k.png"}, "/dev/null");
    result = run({"deblur", "in.png", "picture.png", "--kernel", "-"}, at("k.png"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
}

TEST_F(StandardStreams, TextsThatAreNoKernelAreRecognised) {
    writeText(at("ascii.pgm"), "P2\n3 1\n255\n100 200 100\n");
    ProgramResult result = run({"deblur", "in.png", "a.png", "--kernel", "-"}, at("ascii.pgm"));
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    writeText(at("bad"), "1 2 x\n");
    result = run({"deblur", "in.png", "a.png", "--kernel", "-"}, at("bad"));
    EXPECT_EQ(result.errors, "velorn: 'standard input' line 1: 'x' is not a number\n");
}

TEST_F(StandardStreams, OutputWithoutAFormatIsAWrongCommandLine) {
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"deblur", "in.png", "-", "--disc", "2"},
                                               {"preview", "in.png", "-"},
                                               {"estimate", "in.png", "-o", "-"},
                                               {"estimate", "in.png", "--sheet", "-"},
                                               {"try", "in.png", "-o", "-", "--disc", "2"},
                                               {"kernel", "disc", "2", "-o", "-"}}) {
        const ProgramResult result = run(words, "/dev/null");
        EXPECT_EQ(result.exitStatus, 2) << words[0];
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.errors.find("needs --format: "), std::string::npos) << result.errors;
    }
}

TEST_F(StandardStreams, ManyPicturesHaveNone) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"-", "in.png", "out.png"}, "'-', a standard stream, is only for a single picture"},
        {{"in.png", "-", "--output-dir", "d"}, "'-', the standard input, cannot be restored with"},
        {{"-", "--output-dir", "d"}, "'-', the standard input, cannot be restored with"},
        {{"in.png", "--output-dir", "-"}, "--output-dir needs a folder, not '-'"},
        {{"in.png", "--output-dir", "d", "--format", "png"}, "--format excludes --output-dir"}};
    for (const auto& [files, message] : cases) {
        std::vector<std::string> words{"deblur", "--disc", "2"};
        words.insert(words.end(), files.begin(), files.end());
        const ProgramResult result = run(words, at("in.png"));
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_NE(result.errors.find(message), std::string::npos) << result.errors;
        EXPECT_EQ(m_folder.fileCount(), 1u);
    }
}

TEST_F(StandardStreams, InputIsReadForOneFileOnly) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"deblur", "-", "out.png", "--kernel", "-"},
             {"deblur", "-", "out.png", "--blind", "--start", "-"},
             {"estimate", "-", "--start", "-"},
             {"try", "-", "-o", "out.png", "--kernel", "-"},
             {"preview", "-", "out.png", "--profile", "-"}}) {
        const ProgramResult result = run(words, at("in.png"));
        EXPECT_EQ(result.exitStatus, 2) << words[0];
        EXPECT_EQ(result.errors, "velorn: '-', the standard input, can be read only once\n");
    }
}

TEST_F(StandardStreams, FilesOfTheirNameDoNotMatter) {
    writeText(at("-"), "a file");
    for (const std::string option : {"--no-clobber", "--skip-existing"}) {
        const ProgramResult result =
            run({"deblur", "in.png", "-", "--format", "png", "--disc", "2", option}, "/dev/null",
                at("out"));
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        EXPECT_FALSE(bytesOfFile(at("out")).empty()) << option;
    }
    EXPECT_EQ(bytesOfFile(at("-")).size(), 6u);
    const ProgramResult result =
        run({"deblur", "in.png", "./-", "--format", "png", "--disc", "2"}, "/dev/null");
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(bytesOfFile(at("-")), bytesOfFile(at("out")));
}

TEST_F(StandardStreams, OutputHoldsNothingButThePicture) {
    const ProgramResult plain = run({"deblur", "in.png", "file.png", "--disc", "2"}, "/dev/null");
    ASSERT_EQ(plain.exitStatus, 0) << plain.errors;
    const ProgramResult result =
        run({"deblur", "in.png", "-", "--format", "png", "--disc", "2", "--verbose"}, "/dev/null",
            at("out.png"));
    EXPECT_NE(result.errors.find("velorn: noise "), std::string::npos);
    EXPECT_EQ(bytesOfFile(at("out.png")), bytesOfFile(at("file.png")));
}

TEST_F(StandardStreams, MessagesNameThem) {
    ImageSpec spec(20, 20, 4, TypeDesc::UINT8);
    vel::test::writePicture(at("alpha.png"), spec, vel::test::variedSamples<std::uint8_t>(spec));
    ProgramResult result = run({"deblur", "-", "-", "--format", "jpeg", "--no-deconvolve"},
                               at("alpha.png"), at("out"));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors.find("velorn: warning: 'standard output'"), 0u) << result.errors;
    result = run({"deblur", "-", "out.png", "--disc", "20"}, at("alpha.png"));
    EXPECT_EQ(result.errors.find("velorn: 'standard input': "), 0u) << result.errors;
    result = run({"deblur", "-", "-", "--format", "jpeg", "--depth", "16", "--disc", "2"},
                 at("in.png"), at("out"));
    EXPECT_EQ(result.errors.find("velorn: 'standard output': "), 0u) << result.errors;
}

TEST_F(StandardStreams, FormatsAreNamedForFilesWithoutExtension) {
    EXPECT_EQ(run({"preview", "in.png", "plain", "--format", "jpeg"}, "/dev/null").exitStatus, 0);
    EXPECT_EQ(bytesOfFile(at("plain")).at(0), 0xFF);
    ProgramResult result = run({"preview", "in.png", "plain2"}, "/dev/null");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.errors.find("no extension"), std::string::npos) << result.errors;
    result = run({"preview", "in.png", "a.png", "--format", "jpeg"}, "/dev/null");
    EXPECT_EQ(result.exitStatus, 2);
    result = run({"preview", "in.png", "a", "--format", "jpge"}, "/dev/null");
    EXPECT_NE(result.errors.find("did you mean jpeg?"), std::string::npos) << result.errors;
    result = run({"preview", "in.png", "a.pgn"}, "/dev/null");
    EXPECT_NE(result.errors.find("did you mean .png?"), std::string::npos) << result.errors;
}

TEST_F(StandardStreams, EmptyAndWrongInputsAreFailuresThatNameTheStandardInput) {
    writeText(at("text"), "not a picture");
    for (const std::string& in : std::vector<std::string>{at("text"), "/dev/null"}) {
        const ProgramResult result = run({"deblur", "-", "out.png", "--disc", "2"}, in);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.errors.find("velorn: cannot read 'standard input': "), 0u)
            << result.errors;
        EXPECT_EQ(result.errors.find("/proc/"), std::string::npos) << result.errors;
    }
}

TEST_F(StandardStreams, ClosedReaderEndsTheCommandQuietly) {
    const std::size_t files = m_folder.fileCount();
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"deblur", at("in.png"), "-", "--format", "png", "--disc", "2"},
             {"preview", at("in.png"), "-", "--format", "tiff"},
             {"estimate", at("in.png"), "-o", "-", "--format", "txt", "--size", "3", "--sheet",
              at("sheet.png")},
             {"kernel", "disc", "2", "-o", "-", "--format", "csv"}}) {
        std::vector<std::string> line{kProgram};
        line.insert(line.end(), words.begin(), words.end());
        const ProgramResult result = runProgram(line, [] {
            int ends[2];
            if (pipe(ends) == 0) {
                close(ends[0]);
                dup2(ends[1], STDOUT_FILENO);
            }
        });
        EXPECT_EQ(result.exitStatus, 128 + SIGPIPE) << words[0];
        EXPECT_EQ(result.errors.find("velorn: cannot"), std::string::npos) << result.errors;
        EXPECT_EQ(m_folder.fileCount(), files) << words[0];
    }
}

TEST_F(StandardStreams, ReaderOfTheFirstBytesEndsTheCommandQuietly) {
    ImageSpec spec(400, 300, 3, TypeDesc::UINT8); // more than a pipe holds
    vel::test::writePicture(at("large.bmp"), spec, vel::test::variedSamples<std::uint8_t>(spec));
    const ProgramResult result =
        runProgram({"/bin/bash", "-c",
                    "'" + kProgram + "' preview '" + at("large.bmp") +
                        "' - --format bmp | head -c 10; echo \" ${PIPESTATUS[0]}\""});
    EXPECT_EQ(result.output.substr(0, 2), "BM");
    EXPECT_TRUE(result.output.ends_with(" 141\n")) << result.output.substr(10);
    EXPECT_EQ(result.errors, "");
}

TEST_F(StandardStreams, ClosedOnesAreFailures) {
    const ProgramResult noOutput =
        runProgram({kProgram, "deblur", at("in.png"), "-", "--format", "png", "--disc", "2"},
                   [] { close(STDOUT_FILENO); });
    EXPECT_EQ(noOutput.exitStatus, 1);
    EXPECT_EQ(noOutput.errors,
              "velorn: cannot write to the standard output: Bad file descriptor\n");
    const ProgramResult noInput = runProgram(
        {kProgram, "deblur", "-", at("out.png"), "--disc", "2"}, [] { close(STDIN_FILENO); });
    EXPECT_EQ(noInput.exitStatus, 1);
    EXPECT_EQ(noInput.errors, "velorn: cannot read 'standard input': Bad file descriptor\n");
}

TEST_F(StandardStreams, SignalsEndTheWaitForInput) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[0], STDIN_FILENO);
        close(ends[1]);
        vel::test::detail::become({kProgram, "deblur", "-", at("out.png"), "--disc", "2"});
    }
    // The command waits for more once it has read the byte.
    for (int left = 1; left > 0; ioctl(ends[0], FIONREAD, &left)) {
        sched_yield();
    }
    kill(child, SIGINT);
    EXPECT_EQ(vel::test::detail::exitStatusOf(child), 128 + SIGINT);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(StandardStreams, TerminalsAreNoOutput) {
    const ProgramResult result = vel::test::runOnTerminal(
        {kProgram, "deblur", at("in.png"), "-", "--format", "png", "--disc", "2"}, 0);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.output.find("standard output is a terminal"), std::string::npos);
}

class SpecialNames : public StandardStreams, public testing::WithParamInterface<const char*> {};

TEST_P(SpecialNames, AreNamesOfFiles) {
    const std::string name = GetParam();
    ProgramResult result = run({"deblur", "--no-deconvolve", "--", "in.png", name}, "/dev/null");
    ASSERT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_TRUE(std::filesystem::exists(m_folder / name));
    result = run({"preview", "--", name, "shown.png"}, "/dev/null");
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_TRUE(std::filesystem::exists(m_folder / "shown.png"));
    EXPECT_EQ(m_folder.fileCount(), 3u);
}

INSTANTIATE_TEST_SUITE_P(OfFiles, SpecialNames,
                         testing::Values("a?b.png", "a?b=c&d.jpg", "#1.tif", "a#%04d.png", "-.png",
                                         "a*b[1].png", "two words.jpg", "schön 日.png",
                                         "{a,b}'\".png"));

TEST_F(StandardStreams, KernelsHaveNamesWithQuestionMarks) {
    ASSERT_EQ(run({"kernel", "disc", "2", "-o", "k?.png"}, "/dev/null").exitStatus, 0);
    ProgramResult result = run({"deblur", "in.png", "o.png", "--kernel", "k?.png"}, "/dev/null");
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    result = run({"deblur", "none?.png", "o.png", "--disc", "2"}, "/dev/null");
    EXPECT_EQ(result.errors, "velorn: cannot read 'none?.png': No such file or directory\n");
}

} // namespace
