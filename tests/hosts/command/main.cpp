#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/PixelScale.h"
#include "tests/hosts/command/CommandProcess.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>
#include <regex>

namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;
using vel::test::bytesOfFile;
using vel::test::ProgramResult;
using vel::test::readPicture;
using vel::test::runOnTerminal;
using vel::test::writeBytes;
using vel::test::writePicture;
using vel::test::writeText;
using velorn::ImageFile;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

const std::string kProgram = VELORN_PROGRAM;

/// Whether `errors` is a single line that begins with the name of the program.
bool isOneLine(const std::string& errors) {
    return std::regex_match(errors, std::regex("velorn: [^\n]+\n"));
}

class Velorn : public vel::test::CommandProcess {
protected:
    /// Writes a blurred picture and keeps the sharp and the blurred pixels.
    void writeBlurred(const std::string& name, int width = 180, int height = 120) {
        m_sharp = vel::test::drawnPicture(width, height);
        m_soft = vel::test::outOfFocus(m_sharp, 3.0f);
        write(name, m_soft);
    }

    double gainOf(const std::string& name) const {
        ImageSpec spec;
        const auto& truth = std::get<Bytes>(m_sharp.samples);
        return vel::test::decibels(truth, readPicture<std::uint8_t>(at(name), spec), 255.0) -
               vel::test::decibels(truth, std::get<Bytes>(m_soft.samples), 255.0);
    }

    void expectFailure(const std::vector<std::string>& words, const std::string& part,
                       const std::function<void()>& inChild = {}) {
        const auto before = m_folder.fileCount();
        const ProgramResult result = run(words, inChild);
        EXPECT_EQ(result.exitStatus, 1) << result.errors;
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
        EXPECT_NE(result.errors.find(part), std::string::npos) << result.errors;
        EXPECT_EQ(m_folder.fileCount(), before);
    }

    velorn::RgbPixels m_sharp;
    velorn::RgbPixels m_soft;
};

TEST_F(Velorn, DeblurRestoresAPictureSilently) {
    writeBlurred("in.png");
    const ProgramResult result = run({"deblur", at("in.png"), at("out.png"), "--disc", "3"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "");
    EXPECT_GT(gainOf("out.png"), 3.0);
    EXPECT_EQ(m_folder.fileCount(), 2u);
}

TEST_F(Velorn, KernelFileGivesTheResultOfItsBlur) {
    writeBlurred("in.png");
    ASSERT_EQ(run({"kernel", "disc", "3", "-o", at("k.txt")}).exitStatus, 0);
    ASSERT_EQ(run({"kernel", "disc", "3", "-o", at("k.png")}).exitStatus, 0);
    ASSERT_EQ(run({"deblur", at("in.png"), at("a.png"), "--disc", "3"}).exitStatus, 0);
    ASSERT_EQ(run({"deblur", at("in.png"), at("b.png"), "--kernel", at("k.txt")}).exitStatus, 0);
    ASSERT_EQ(run({"deblur", at("in.png"), at("c.png"), "--kernel", at("k.png")}).exitStatus, 0);
    ImageSpec spec;
    EXPECT_EQ(readPicture<std::uint8_t>(at("a.png"), spec),
              readPicture<std::uint8_t>(at("b.png"), spec));
    EXPECT_GT(gainOf("c.png"), 3.0);
}

TEST_F(Velorn, BlindRestorationFindsTheBlur) {
    writeBlurred("in.png", 320, 240);
    const ProgramResult result = run({"deblur", at("in.png"), at("out.png"), "--blind", "9"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
    EXPECT_GT(gainOf("out.png"), 1.0);
}

TEST_F(Velorn, EstimateWritesAKernelAndPrintsIt) {
    writeBlurred("in.png", 320, 240);
    const ProgramResult result = run({"estimate", at("in.png"), "--size", "9", "-o", at("k.png")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_TRUE(std::regex_search(
        result.output, std::regex("^blur:        out of focus, radius about [23]\\.[0-9] pixels\n"
                                  "kernel:      [79] by [79], candidate 1 of [0-9]+\n"
                                  "confidence:  [0-9]+ %\n"
                                  "(parts:[^\n]*\n)?"
                                  "misfit:      [0-9]\\.[0-9] times the noise\n")))
        << result.output;
    EXPECT_NE(result.output.find("██"), std::string::npos);
    EXPECT_EQ(run({"deblur", at("in.png"), at("out.png"), "--kernel", at("k.png")}).exitStatus, 0);
}

TEST_F(Velorn, EstimateOnlyPrintsWithoutAnOutput) {
    writeBlurred("in.png", 320, 240);
    const ProgramResult result = run({"estimate", at("in.png")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_NE(result.output.find("██"), std::string::npos);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(Velorn, SheetShowsTheCandidates) {
    writeBlurred("in.png", 320, 240);
    const ProgramResult result = run({"estimate", at("in.png"), "--sheet", at("sheet.jpg")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    ImageSpec spec;
    readPicture<std::uint8_t>(at("sheet.jpg"), spec);
    EXPECT_GT(spec.width, 1000);
    EXPECT_GT(spec.height, 500);
    EXPECT_EQ(m_folder.fileCount(), 2u);
}

TEST_F(Velorn, CandidateIsTheKernelThatEstimateWrites) {
    writeBlurred("in.png", 320, 240);
    const auto restored = [&](const std::string& number, const std::string& name) {
        EXPECT_EQ(
            run({"deblur", at("in.png"), at(name), "--blind", "--candidate", number}).exitStatus,
            0);
        ImageSpec spec;
        return readPicture<std::uint8_t>(at(name), spec);
    };
    const auto first = restored("1", "1.png");
    EXPECT_NE(first, restored("2", "2.png"));
    ASSERT_EQ(run({"deblur", at("in.png"), at("b.png"), "--blind"}).exitStatus, 0);
    ImageSpec spec;
    EXPECT_EQ(first, readPicture<std::uint8_t>(at("b.png"), spec));
}

TEST_F(Velorn, ChoicesThatThePictureDoesNotAllowAreFailures) {
    writeBlurred("in.png", 200, 160);
    writeText(at("large.txt"), "1 1\n");
    expectFailure({"estimate", at("in.png"), "--candidate", "32"},
                  "there is no candidate 32: the search has found ");
    expectFailure({"deblur", at("in.png"), at("out.png"), "--blind", "--candidate", "31"},
                  "there is no candidate 31: the search has found ");
    expectFailure({"estimate", at("in.png"), "--look", "100,100,101,50"}, "200 by 160");
    expectFailure({"estimate", at("in.png"), "--start", at("none.txt")}, at("none.txt"));
    expectFailure({"estimate", at("in.png"), "--start", at("large.txt")}, at("large.txt"));
    ASSERT_EQ(run({"kernel", "disc", "30", "-o", at("disc.txt")}).exitStatus, 0);
    expectFailure({"deblur", at("in.png"), at("out.png"), "--blind", "--start", at("disc.txt")},
                  "the kernel to refine is 61 by 61, but may only be 53 by 53");
    expectFailure({"estimate", at("in.png"), "--sheet", at("sheet.xyz")}, at("sheet.xyz"));
    expectFailure({"estimate", at("in.png"), "--sheet", at("none/sheet.png")},
                  at("none/sheet.png"));
}

TEST_F(Velorn, StartIsRefined) {
    writeBlurred("in.png", 320, 240);
    ASSERT_EQ(run({"kernel", "disc", "2", "-o", at("guess.png")}).exitStatus, 0);
    const ProgramResult result =
        run({"deblur", at("in.png"), at("out.png"), "--blind", "--start", at("guess.png")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_GT(gainOf("out.png"), 1.0);
}

TEST_F(Velorn, KernelThatExplainsThePictureBadlyIsAWarning) {
    const auto sharp = vel::test::faded(vel::test::drawnPicture(240, 200), 0.15);
    // The noise is stronger than the edges.
    write("in.png", vel::test::noisy(vel::test::outOfFocus(sharp, 4.0f), 8));
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"deblur", at("in.png"), at("out.png"), "--blind"},
                                               {"estimate", at("in.png"), "-o", at("k.txt")}}) {
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
        EXPECT_NE(result.errors.find("velorn: warning: "), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find("may be worse than the picture"), std::string::npos);
    }
    EXPECT_EQ(m_folder.fileCount(), 3u);
    std::filesystem::remove(at("out.png"));
    expectFailure({"deblur", at("in.png"), at("out.png"), "--blind", "--strict"}, "--strict");
    expectFailure({"estimate", at("in.png"), "-o", at("j.txt"), "--sheet", at("s.png"), "--strict"},
                  "uncertain (confidence ");
}

TEST_F(Velorn, PictureWithoutEdgesIsAFailureOfTheSearch) {
    ImageFile grey(80, 60, 1, 8);
    writeBytes(at("in.png"), grey.encode("in.png"));
    expectFailure({"estimate", at("in.png"), "--size", "9", "-o", at("k.txt")}, "too few edges");
    expectFailure({"deblur", at("in.png"), at("out.png"), "--blind", "9"}, "too few edges");
}

TEST_F(Velorn, InterruptDuringAnEstimateWritesNothingAndExitsWith130) {
    writeBlurred("in.png", 640, 480);
    const ProgramResult result =
        runOnTerminal({kProgram, "deblur", at("in.png"), at("out.png"), "--blind", "25"}, SIGINT);
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(Velorn, InterruptDuringASheetWritesNothingAndExitsWith130) {
    writeBlurred("in.png", 640, 480);
    const ProgramResult result = runOnTerminal(
        {kProgram, "estimate", at("in.png"), "-o", at("k.txt"), "--sheet", at("s.png")}, SIGINT);
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(Velorn, SharpeningAndDetailAddContrastToTheRestoration) {
    writeBlurred("in.png");
    const auto contrast = [&](const std::string& name) {
        ImageSpec spec;
        const auto samples = readPicture<std::uint8_t>(at(name), spec);
        double steps = 0.0;
        for (std::size_t i = 3; i < samples.size(); ++i) {
            steps += std::abs(samples[i] - samples[i - 3]);
        }
        return steps;
    };
    ASSERT_EQ(run({"deblur", at("in.png"), at("plain.png"), "--disc", "3"}).exitStatus, 0);
    for (const std::string option : {"--sharpen", "--detail"}) {
        // The names of the files follow an option without numbers.
        const ProgramResult result =
            run({"deblur", "--disc", "3", option, at("in.png"), at("more.png")});
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        EXPECT_GT(contrast("more.png"), 1.02 * contrast("plain.png")) << option;
        EXPECT_GT(gainOf("more.png"), 2.0) << option;
    }
}

TEST_F(Velorn, PreviewWritesAScaledPicture) {
    writeBlurred("in.png");
    const ProgramResult result = run({"preview", at("in.png"), at("out.png"), "--scale", "0.5"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "");
    ImageSpec spec;
    readPicture<std::uint8_t>(at("out.png"), spec);
    EXPECT_EQ(spec.width, 90);
    EXPECT_EQ(spec.height, 60);
    EXPECT_EQ(m_folder.fileCount(), 2u);
}

TEST_F(Velorn, OutputMayBeTheInput) {
    writeBlurred("in.png");
    ASSERT_EQ(run({"deblur", at("in.png"), at("in.png"), "--disc", "3"}).exitStatus, 0);
    EXPECT_GT(gainOf("in.png"), 3.0);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(Velorn, SixteenBitAlphaAndMetadataAreKept) {
    ImageSpec spec(90, 60, 4, TypeDesc::UINT16);
    spec.alpha_channel = 3;
    spec.attribute("Make", "A maker");
    spec.attribute("Exif:LensModel", "Fifty");
    vel::test::attachProfile(spec, vel::test::minimalProfile());
    const auto samples = vel::test::variedSamples<std::uint16_t>(spec);
    writePicture(at("in.tif"), spec, samples);
    ASSERT_EQ(run({"deblur", at("in.tif"), at("out.tif"), "--gaussian", "1"}).exitStatus, 0);
    ImageSpec back;
    const auto written = readPicture<std::uint16_t>(at("out.tif"), back);
    ASSERT_EQ(back.format, TypeDesc::UINT16);
    ASSERT_EQ(written.size(), samples.size());
    for (std::size_t i = 3; i < samples.size(); i += 4) {
        ASSERT_EQ(written[i], samples[i]);
    }
    EXPECT_EQ(back.get_string_attribute("Make"), "A maker");
    EXPECT_EQ(back.get_string_attribute("Exif:LensModel"), "Fifty");
    EXPECT_NE(back.find_attribute("ICCProfile"), nullptr);
}

TEST_F(Velorn, PictureIsUnchangedWithoutAnyStage) {
    for (const int channels : {1, 2, 3, 4}) {
        ImageSpec spec(50, 40, channels, TypeDesc::UINT8);
        spec.alpha_channel = channels % 2 == 0 ? channels - 1 : -1;
        const auto samples = vel::test::variedSamples<std::uint8_t>(spec);
        writePicture(at("in.png"), spec, samples);
        ASSERT_EQ(run({"deblur", at("in.png"), at("out.png"), "--no-deconvolve"}).exitStatus, 0);
        ImageSpec back;
        EXPECT_EQ(readPicture<std::uint8_t>(at("out.png"), back), samples) << channels;
        EXPECT_EQ(back.nchannels, channels);
    }
}

TEST_F(Velorn, WhiteStaysWhiteAtSixteenBits) {
    ImageFile white(40, 40, 1, 16);
    std::ranges::fill(std::get<Words>(white.samples()), std::uint16_t{65535});
    writeBytes(at("in.png"), white.encode("in.png"));
    ASSERT_EQ(run({"deblur", at("in.png"), at("out.png"), "--gaussian", "1"}).exitStatus, 0);
    ImageSpec spec;
    for (const std::uint16_t sample : readPicture<std::uint16_t>(at("out.png"), spec)) {
        ASSERT_GE(sample, 65530);
    }
}

TEST_F(Velorn, VerbosePrintsNoiseAndStrength) {
    writeBlurred("in.png");
    const ProgramResult result = run({"deblur", at("in.png"), at("out.png"), "--disc", "3", "-v"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(
        std::regex_match(result.errors, std::regex("velorn: noise [0-9.e-]+ levels, strength "
                                                   "[0-9.e+]+, alpha [0-9.]+, limit [0-9.]+.*\n")))
        << result.errors;
}

TEST_F(Velorn, FailuresAreOneLineThatNamesTheFile) {
    writeBlurred("in.png");
    writeText(at("text.png"), "not a picture");
    writeText(at("bad.txt"), "1 2\n3\n");
    expectFailure({"deblur", at("none.png"), at("out.png"), "--disc", "3"}, at("none.png"));
    expectFailure({"deblur", at("text.png"), at("out.png"), "--disc", "3"}, at("text.png"));
    expectFailure({"deblur", "/dev/zero", at("out.png"), "--disc", "3"}, "'/dev/zero'");
    expectFailure({"deblur", at("in.png"), at("none/out.png"), "--disc", "3"}, at("none/out.png"));
    expectFailure({"deblur", at("in.png"), at("out.xyz"), "--disc", "3"}, at("out.xyz"));
    expectFailure({"deblur", at("in.png"), at("out.png"), "--kernel", at("bad.txt")},
                  at("bad.txt"));
    expectFailure({"deblur", at("in.png"), at("out.png"), "--kernel", at("none.txt")},
                  at("none.txt"));
    expectFailure({"preview", at("none.png"), at("out.png")}, at("none.png"));
    expectFailure({"preview", at("in.png"), at("none/out.png")}, at("none/out.png"));
    expectFailure({"preview", at("in.png"), at("out.xyz")}, at("out.xyz"));
    expectFailure({"preview", at("in.png"), at("out.png"), "--profile", at("text.png")},
                  at("text.png"));
    expectFailure({"kernel", "disc", "3", "-o", at("none/k.png")}, at("none/k.png"));
    expectFailure({"kernel", "disc", "3", "-o", at("k.xyz")}, at("k.xyz"));
}

TEST_F(Velorn, KernelTooLargeForThePictureIsAFailureThatNamesTheLimit) {
    writeBlurred("in.png", 40, 20);
    expectFailure({"deblur", at("in.png"), at("out.png"), "--disc", "10"}, "40 by 20");
    EXPECT_EQ(run({"deblur", at("in.png"), at("out.png"), "--disc", "9"}).exitStatus, 0);
}

TEST_F(Velorn, UnsupportedChannelsAreAFailure) {
    ImageSpec spec(8, 8, 5, TypeDesc::UINT8);
    writePicture(at("in.tif"), spec, vel::test::variedSamples<std::uint8_t>(spec));
    expectFailure({"deblur", at("in.tif"), at("out.tif"), "--disc", "3"}, "has 5 channels");
}

TEST_F(Velorn, FailedWriteLeavesTheOutputUnchangedAndNoOtherFile) {
    writeBlurred("in.png");
    for (const std::string name : {"out.png", "out.jpg", "out.tif", "out.webp"}) {
        writeText(at(name), "the previous content");
        expectFailure({"deblur", at("in.png"), at(name), "--disc", "3"}, at(name), [] {
            struct rlimit limit {};
            getrlimit(RLIMIT_FSIZE, &limit);
            limit.rlim_cur = 200;
            setrlimit(RLIMIT_FSIZE, &limit);
        });
        const auto bytes = bytesOfFile(at(name));
        EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "the previous content") << name;
    }
}

TEST_F(Velorn, WrongCommandLinesExitWithTwo) {
    for (const auto& words : std::vector<std::vector<std::string>>{
             {},
             {"polish"},
             {"deblur", "a.png", "b.png"},
             {"deblur", "a.png", "b.png", "--disc", "2", "--gaussian", "2"},
             {"deblur", "a.png", "b.png", "--disc", "2", "--alpha", "7"},
             {"deblur", "a.png", "b.png", "--disc", "2", "--detail", "--detail-gain", "0.3"},
             {"preview", "a.png"},
             {"preview", "a.png", "b.png", "--scale", "0"},
             {"estimate"},
             {"estimate", "a.png", "--look", "1,2,3"},
             {"estimate", "a.png", "--candidate", "0"},
             {"deblur", "a.png", "b.png", "--blind", "6"},
             {"kernel", "disc", "2"}}) {
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    }
}

TEST_F(Velorn, HelpAndVersionGoToTheStandardOutput) {
    for (const auto& words :
         std::vector<std::vector<std::string>>{{"--help"},
                                               {"--version"},
                                               {"deblur", "--help"},
                                               {"kernel", "--help"},
                                               {"estimate", "--help"},
                                               {"preview", "--help"},
                                               {"kernel", "motion", "--help"}}) {
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_NE(result.output, "");
        EXPECT_EQ(result.errors, "");
    }
}

TEST_F(Velorn, HelpThatCannotBePrintedIsAFailure) {
    const ProgramResult result = run({"--help"}, [] {
        const int full = open("/dev/full", O_WRONLY);
        dup2(full, STDOUT_FILENO);
    });
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
}

TEST_F(Velorn, ProgressBarIsShownOnATerminalAndCleared) {
    writeBlurred("in.png");
    const ProgramResult result =
        runOnTerminal({kProgram, "deblur", at("in.png"), at("out.png"), "--disc", "3"}, 0);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.output.find("100%"), std::string::npos) << result.output;
    EXPECT_EQ(result.output.back(), '\r');
}

TEST_F(Velorn, InterruptDuringARestorationLeavesTheOutputUnchangedAndExitsWith130) {
    ImageFile picture(1500, 1200, 1, 8);
    writeBytes(at("in.png"), picture.encode("in.png"));
    writeText(at("out.png"), "the previous content");
    // The first output on the terminal is the progress bar, dozens of tiles before the end.
    const ProgramResult result =
        runOnTerminal({kProgram, "deblur", at("in.png"), at("out.png"), "--disc", "3"}, SIGINT);
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(result.output.find("100%"), std::string::npos);
    const auto bytes = bytesOfFile(at("out.png"));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "the previous content");
    EXPECT_EQ(m_folder.fileCount(), 2u);
}

TEST_F(Velorn, BlurRefersToThePictureAsDisplayed) {
    // A motion along the displayed rows is a motion along the stored columns.
    const auto upright = velorn::makeKernel({velorn::AnalyticBlur::Shape::Motion, 9.0f, 90.0f});
    m_sharp = vel::test::drawnPicture(160, 120);
    m_soft = vel::test::blurred(m_sharp, upright);
    ImageSpec spec(160, 120, 3, TypeDesc::UINT8);
    spec.attribute("Orientation", 6);
    writePicture(at("in.tif"), spec, std::get<Bytes>(m_soft.samples));
    ASSERT_EQ(run({"deblur", at("in.tif"), at("level.tif"), "--motion", "9,0"}).exitStatus, 0);
    ASSERT_EQ(run({"deblur", at("in.tif"), at("upright.tif"), "--motion", "9,90"}).exitStatus, 0);
    EXPECT_GT(gainOf("level.tif"), 3.0);
    EXPECT_LT(gainOf("upright.tif"), 0.0);
}

} // namespace
