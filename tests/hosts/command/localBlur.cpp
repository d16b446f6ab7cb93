// Runs `velorn deblur --blind --local` from end to end.
#include "tests/hosts/command/CommandProcess.h"
#include "tests/support/TestPictures.h"
#include "tests/velorn/Scene.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

using vel::test::ProgramResult;
using vel::test::readPicture;
using Bytes = std::vector<std::uint8_t>;
using Shape = velorn::AnalyticBlur::Shape;
namespace api = velorn::api;

constexpr int kWidth = 900;
constexpr int kHeight = 300;

velorn::RgbPixels sharpScene() {
    Bytes samples;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            for (int c = 0; c < 3; ++c) {
                samples.push_back(
                    static_cast<std::uint8_t>(std::lround(255.0 * velorntest::sceneAt(x, y, c))));
            }
        }
    }
    return {kWidth, kHeight, samples};
}

velorn::RgbPixels blurredScene(const velorn::AnalyticBlur& blur) {
    return vel::test::blurred(sharpScene(), velorn::makeKernel(blur));
}

/// The scene, out of focus in its left half and moved in its right one.
const velorn::RgbPixels& twoBlurs() {
    static const velorn::RgbPixels picture = [] {
        velorn::RgbPixels left = blurredScene({Shape::Disc, 2.0f, 0.0f});
        const velorn::RgbPixels right = blurredScene({Shape::Motion, 15.0f, 30.0f});
        auto& samples = std::get<Bytes>(left.samples);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            if (i / 3 % kWidth >= kWidth / 2) {
                samples[i] = std::get<Bytes>(right.samples)[i];
            }
        }
        return left;
    }();
    return picture;
}

VelornPicture viewOf(Bytes& samples) {
    return api::pictureOf(samples.data(), kWidth, kHeight, 3);
}

Bytes samplesOfTwoBlurs() {
    return std::get<Bytes>(twoBlurs().samples);
}

api::KernelGrid gridOfTwoBlurs() {
    static const api::KernelGrid grid = [] {
        Bytes samples = samplesOfTwoBlurs();
        return api::findKernelGrid(viewOf(samples)).grid;
    }();
    return grid;
}

/// What the library makes of the picture with two blurs.
Bytes restored(const api::KernelGrid& grid) {
    Bytes samples = samplesOfTwoBlurs();
    api::restoreLocal(viewOf(samples), viewOf(samples), grid);
    return samples;
}

class LocalBlur : public vel::test::CommandProcess {
protected:
    void write(const velorn::RgbPixels& pixels) { CommandProcess::write("in.png", pixels); }

    /// Runs `velorn deblur in.png out.png --blind`.
    ProgramResult deblur(const std::vector<std::string>& options,
                         const std::string& input = "in.png") {
        std::vector<std::string> words{"deblur", at(input), at("out.png"), "--blind"};
        words.insert(words.end(), options.begin(), options.end());
        return run(std::move(words));
    }

    Bytes output() {
        OIIO::ImageSpec spec;
        return readPicture<std::uint8_t>(at("out.png"), spec);
    }
};

TEST_F(LocalBlur, RestoresAsTheLibraryDoesWithAnyNumberOfThreads) {
    write(twoBlurs());
    ASSERT_EQ(gridOfTwoBlurs().columns(), 6);
    ASSERT_EQ(gridOfTwoBlurs().rows(), 2);
    const Bytes expected = restored(gridOfTwoBlurs());
    for (const char* threads : {"1", "3"}) {
        const ProgramResult result = deblur({"--local", "--threads", threads});
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(output() == expected) << threads;
    }
    const Bytes sharp = std::get<Bytes>(sharpScene().samples);
    EXPECT_GT(vel::test::decibels(sharp, expected, 255.0),
              vel::test::decibels(sharp, samplesOfTwoBlurs(), 255.0) + 1.0);
    EXPECT_EQ(deblur({}).exitStatus, 0);
    EXPECT_FALSE(output() == expected);
}

TEST_F(LocalBlur, TurnRotatesTheKernelOfEveryPart) {
    write(twoBlurs());
    EXPECT_EQ(deblur({"--local", "--turn", "yes"}).exitStatus, 0);
    const api::KernelGrid grid = gridOfTwoBlurs();
    std::vector<api::Kernel> turned;
    for (int row = 0; row < grid.rows(); ++row) {
        for (int column = 0; column < grid.columns(); ++column) {
            turned.push_back(grid.at(column, row).rotatedBy180());
        }
    }
    const Bytes expected = restored(api::KernelGrid::of(turned, grid.columns(), grid.rows()));
    EXPECT_TRUE(output() == expected);
    EXPECT_FALSE(expected == restored(grid));
}

TEST_F(LocalBlur, LookAndStartControlTheFirstSearch) {
    write(twoBlurs());
    ASSERT_EQ(run({"kernel", "motion", "13", "20", "-o", at("k.txt")}).exitStatus, 0);
    const ProgramResult result =
        deblur({"--local", "--look", "500,0,400,300", "--start", at("k.txt")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;

    const api::Kernel start = api::Kernel::of(VELORN_BLUR_MOTION, 13.0f, 20.0f);
    VelornFindSettings settings = api::findSettings();
    settings.region = {500, 0, 400, 300};
    settings.start = start.get();
    Bytes samples = samplesOfTwoBlurs();
    const Bytes expected = restored(api::findKernelGrid(viewOf(samples), settings).grid);
    EXPECT_TRUE(output() == expected);
    EXPECT_FALSE(expected == restored(gridOfTwoBlurs()));
}

TEST_F(LocalBlur, NumberOfKernelsIsThatOfThePictureAsDisplayed) {
    OIIO::ImageSpec spec(kWidth, kHeight, 3, OIIO::TypeDesc::UINT8);
    spec.attribute("Orientation", 6);
    vel::test::writePicture(at("in.tif"), spec, samplesOfTwoBlurs());
    const ProgramResult result = deblur({"--local", "-v"}, "in.tif");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.errors.find("velorn: blur: differs across the picture, 2 by 6 kernels, "
                                 "confidence "),
              std::string::npos)
        << result.errors;
}

TEST_F(LocalBlur, OneBlurIsRestoredWithOneKernelAndOnlyVerboseSaysSo) {
    write(blurredScene({Shape::Disc, 3.0f, 0.0f}));
    EXPECT_EQ(deblur({}).exitStatus, 0);
    const Bytes expected = output();
    const ProgramResult silent = deblur({"--local"});
    EXPECT_EQ(silent.exitStatus, 0);
    EXPECT_EQ(silent.errors, "");
    EXPECT_TRUE(output() == expected);
    const ProgramResult verbose = deblur({"--local", "-v"});
    EXPECT_EQ(verbose.errors.find("velorn: the blur does not differ reliably across the picture: "
                                  "one kernel is used for all of it\nvelorn: blur: out of focus"),
              0u)
        << verbose.errors;
}

TEST_F(LocalBlur, StrictRefusesAPictureThatIsNotBlurred) {
    write(sharpScene());
    const ProgramResult result = deblur({"--local", "--strict"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.errors.find("nothing is written because of --strict"), std::string::npos)
        << result.errors;
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(LocalBlur, WrongCombinationsExitWithTwo) {
    write(sharpScene());
    EXPECT_EQ(deblur({"--local", "--candidate", "1"}).exitStatus, 2);
    EXPECT_EQ(run({"deblur", at("in.png"), at("out.png"), "--disc", "2", "--local"}).exitStatus, 2);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(LocalBlur, InterruptWritesNothingAndExitsWith130) {
    write(twoBlurs());
    const ProgramResult result = vel::test::runOnTerminal(
        {VELORN_PROGRAM, "deblur", at("in.png"), at("out.png"), "--blind", "--local"}, SIGINT);
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

} // namespace
