// Runs 'velorn deblur' with --output-dir as users do.
#include "tests/hosts/command/CommandProcess.h"

#include <gtest/gtest.h>
#include <regex>

namespace {

namespace fs = std::filesystem;
using vel::test::bytesOfFile;
using vel::test::ProgramResult;
using vel::test::writeBytes;
using vel::test::writeText;

class ManyPictures : public vel::test::CommandProcess {
protected:
    ManyPictures() { fs::create_directory(at("in")); }

    /// Writes a blurred picture; each `seed` gives another size.
    void writeBlurred(const std::string& name, int seed = 0) {
        write(name, vel::test::outOfFocus(vel::test::drawnPicture(96 + 8 * seed, 72), 2.0f));
    }

    void writeFolder(int count) {
        for (int i = 0; i < count; ++i) {
            writeBlurred("in/" + std::to_string(i) + (i % 2 == 0 ? ".jpg" : ".png"), i % 5);
        }
    }

    std::vector<std::string> words(std::vector<std::string> rest) const {
        rest.insert(rest.begin(), {VELORN_PROGRAM, "deblur", "--disc", "2"});
        return rest;
    }

    ProgramResult run(std::vector<std::string> rest) const {
        return vel::test::runProgram(words(std::move(rest)));
    }

    std::size_t filesIn(const std::string& name) const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(at(name)), fs::directory_iterator()));
    }

    /// Whether each result in `folder` has the bytes that a call for the picture alone writes.
    void expectBytesOfSingleCalls(const std::string& folder) {
        for (const auto& entry : fs::directory_iterator(at("in"))) {
            const std::string name = entry.path().filename().string();
            const std::string single = at("single-" + name);
            ASSERT_EQ(run({entry.path().string(), single}).exitStatus, 0);
            EXPECT_EQ(bytesOfFile(m_folder / folder / name), bytesOfFile(single)) << name;
        }
    }
};

TEST_F(ManyPictures, FolderIsRestoredWithTheBytesOfSingleCalls) {
    writeFolder(9);
    const ProgramResult result = run({at("in"), "--output-dir", at("new/out")});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(std::regex_match(result.errors, std::regex("velorn: 9 restored in [0-9.]+ s\n")))
        << result.errors;
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(filesIn("new/out"), 9u);
    expectBytesOfSingleCalls("new/out");
}

TEST_F(ManyPictures, NumberOfThreadsDoesNotChangeTheBytes) {
    writeFolder(5);
    ASSERT_EQ(run({at("in"), "--output-dir", at("one"), "--threads", "1"}).exitStatus, 0);
    ASSERT_EQ(run({at("in"), "--output-dir", at("many"), "--threads", "7"}).exitStatus, 0);
    for (const auto& entry : fs::directory_iterator(at("one"))) {
        EXPECT_EQ(bytesOfFile(entry.path()),
                  bytesOfFile(m_folder / "many" / entry.path().filename().string()));
    }
}

TEST_F(ManyPictures, BadPicturesAreListedAndTheOthersRestored) {
    writeFolder(4);
    auto cut = bytesOfFile(at("in/0.jpg"));
    cut.resize(cut.size() / 2);
    writeBytes(at("in/cut.jpg"), cut);
    writeText(at("in/text.jpg"), "no picture");
    const ProgramResult result = run({at("in"), at("missing.png"), "--output-dir", at("out")});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(std::regex_match(result.errors,
                                 std::regex("velorn: [^\n]*in/cut\\.jpg'[^\n]+\n"
                                            "velorn: [^\n]*in/text\\.jpg'[^\n]+\n"
                                            "velorn: cannot read [^\n]*missing\\.png'[^\n]+\n"
                                            "velorn: 4 restored, 3 failed in [0-9.]+ s\n")))
        << result.errors;
    EXPECT_EQ(filesIn("out"), 4u);
}

TEST_F(ManyPictures, FailureOfAllHasTheStatusOfAFailure) {
    writeText(at("in/a.jpg"), "no picture");
    writeText(at("in/b.jpg"), "no picture");
    const ProgramResult result = run({at("in"), "--output-dir", at("out")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.errors.find("velorn: 0 restored, 2 failed in "), std::string::npos);
    EXPECT_EQ(filesIn("out"), 0u);
}

TEST_F(ManyPictures, DepthThatAnOutputCannotHaveIsAFailureOfItAlone) {
    writeBlurred("in/a.jpg");
    writeBlurred("in/b.png");
    const ProgramResult result = run({at("in"), "--output-dir", at("out"), "--depth", "16"});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_NE(result.errors.find("8 bits per sample"), std::string::npos) << result.errors;
    EXPECT_EQ(filesIn("out"), 1u);
}

TEST_F(ManyPictures, EqualOutputsAreRefusedBeforeTheWork) {
    fs::create_directory(at("other"));
    writeBlurred("in/a.png");
    writeBlurred("other/a.png");
    const ProgramResult result = run({at("in"), at("other"), "--output-dir", at("out")});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.errors.find("same output"), std::string::npos) << result.errors;
    EXPECT_FALSE(fs::exists(at("out")));
}

TEST_F(ManyPictures, InputsAreNeverReplaced) {
    writeBlurred("in/a.png");
    const auto before = bytesOfFile(at("in/a.png"));
    const ProgramResult result = run({at("in"), "--output-dir", at("in")});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.errors.find("would replace the input"), std::string::npos) << result.errors;
    EXPECT_EQ(bytesOfFile(at("in/a.png")), before);
}

TEST_F(ManyPictures, TemplateNamesTheResults) {
    writeBlurred("in/a.jpg");
    writeBlurred("in/b.png");
    EXPECT_EQ(run({at("in"), "--output-dir", at("out"), "--name", "{number}-{stem}-sharp.png"})
                  .exitStatus,
              0);
    EXPECT_TRUE(fs::exists(at("out/0001-a-sharp.png")));
    EXPECT_TRUE(fs::exists(at("out/0002-b-sharp.png")));
    EXPECT_EQ(run({at("in"), "--output-dir", at("out"), "--name", "{name}.png"}).exitStatus, 2);
    EXPECT_EQ(run({at("in/a.jpg"), at("c.jpg"), "--name", "{stem}.png"}).exitStatus, 2);
}

TEST_F(ManyPictures, ExistingResultsAreSkippedOrRefusedOnRequest) {
    writeFolder(3);
    fs::create_directory(at("out"));
    writeText(at("out/1.png"), "kept");
    const ProgramResult refused = run({at("in"), "--output-dir", at("out"), "--no-clobber"});
    EXPECT_EQ(refused.exitStatus, 3);
    EXPECT_NE(refused.errors.find("2 restored, 1 failed"), std::string::npos) << refused.errors;
    const ProgramResult skipped = run({at("in"), "--output-dir", at("out"), "--skip-existing"});
    EXPECT_EQ(skipped.exitStatus, 0);
    EXPECT_NE(skipped.errors.find("0 restored, 3 skipped"), std::string::npos) << skipped.errors;
    EXPECT_EQ(bytesOfFile(at("out/1.png")).size(), 4u);
    EXPECT_EQ(run({at("in"), "--output-dir", at("out")}).exitStatus, 0);
    EXPECT_GT(bytesOfFile(at("out/1.png")).size(), 4u);
}

TEST_F(ManyPictures, ExistingResultOfOnePictureIsSkippedOrRefusedOnRequest) {
    writeBlurred("a.png");
    writeText(at("b.png"), "kept");
    EXPECT_EQ(run({at("a.png"), at("b.png"), "--no-clobber"}).exitStatus, 1);
    EXPECT_EQ(run({at("a.png"), at("b.png"), "--skip-existing"}).exitStatus, 0);
    EXPECT_EQ(bytesOfFile(at("b.png")).size(), 4u);
    EXPECT_EQ(run({at("a.png"), at("c.png"), "--no-clobber"}).exitStatus, 0);
    EXPECT_TRUE(fs::exists(at("c.png")));
    EXPECT_EQ(run({at("a.png"), at("b.png"), "--no-clobber", "--skip-existing"}).exitStatus, 2);
}

TEST_F(ManyPictures, InterruptedBatchIsResumed) {
    writeFolder(60);
    // The progress bar is the first that is printed.
    const ProgramResult first = vel::test::runOnTerminal(
        words({at("in"), "--output-dir", at("out"), "--threads", "1"}), SIGINT);
    EXPECT_EQ(first.exitStatus, 130);
    EXPECT_TRUE(
        std::regex_search(first.output, std::regex("velorn: [0-9]+ restored, [0-9]+ left in ")))
        << first.output;
    for (const auto& entry : fs::directory_iterator(at("out"))) {
        EXPECT_TRUE(fs::exists(m_folder / "in" / entry.path().filename().string())) << entry.path();
    }
    EXPECT_LT(filesIn("out"), 60u);
    const ProgramResult second = run({at("in"), "--output-dir", at("out"), "--skip-existing"});
    EXPECT_EQ(second.exitStatus, 0) << second.errors;
    EXPECT_EQ(filesIn("out"), 60u);
    for (int i = 0; i < 60; ++i) {
        const std::string name = std::to_string(i) + (i % 2 == 0 ? ".jpg" : ".png");
        const std::string twin = std::to_string((i + 10) % 60) + (i % 2 == 0 ? ".jpg" : ".png");
        EXPECT_EQ(bytesOfFile(m_folder / "out" / name), bytesOfFile(m_folder / "out" / twin));
    }
}

TEST_F(ManyPictures, TerminalShowsOneBarForAll) {
    writeFolder(12);
    const ProgramResult result =
        vel::test::runOnTerminal(words({at("in"), "--output-dir", at("out")}), 0);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(std::regex_search(result.output, std::regex("% [0-9]+/12"))) << result.output;
    EXPECT_TRUE(std::regex_search(result.output, std::regex("\rvelorn: 12 restored in ")))
        << result.output;
}

TEST_F(ManyPictures, WarningsNameThePicture) {
    for (const char* name : {"in/a.png", "in/b.png"}) {
        write(name, vel::test::drawnPicture(200, 160));
    }
    const ProgramResult result =
        CommandProcess::run({"deblur", "--blind", at("in"), "--output-dir", at("out")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_NE(result.errors.find("in/a.png': the picture does not look blurred"), std::string::npos)
        << result.errors;
    EXPECT_NE(result.errors.find("in/b.png': the picture does not look blurred"),
              std::string::npos);
}

TEST_F(ManyPictures, VerboseRunNamesEachPicture) {
    writeFolder(2);
    const ProgramResult result = run({"-v", at("in"), "--output-dir", at("out")});
    EXPECT_EQ(result.exitStatus, 0);
    for (const char* name : {"0.jpg", "1.png"}) {
        EXPECT_TRUE(std::regex_search(result.errors,
                                      std::regex(std::string("velorn: '[^\n]*in/") + name +
                                                 "' to '[^\n]*" + name + "'\nvelorn: noise ")))
            << result.errors;
    }
}

TEST_F(ManyPictures, SeveralPicturesNeedAFolder) {
    const ProgramResult result = run({"a.png", "b.png", "c.png"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.errors.find("--output-dir"), std::string::npos) << result.errors;
}

} // namespace
