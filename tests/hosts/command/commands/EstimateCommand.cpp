#include "hosts/command/commands/EstimateCommand.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/pictures/ImageFile.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/BlurredPicture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace {

using velorn::EstimateOptions;

class EstimateCommand : public testing::Test {
protected:
    void SetUp() override {
        const auto blur = velorn::makeKernel({velorn::AnalyticBlur::Shape::Motion, 7.0f, 0.0f});
        m_soft = vel::test::blurred(vel::test::drawnPicture(200, 160), blur);
        m_options.input = m_folder / "in.tif";
        m_options.output = m_folder / "k.txt";
        m_options.blind.largest = {9, 5};
    }

    void writeSoft(int orientation) {
        OIIO::ImageSpec spec(200, 160, 3, OIIO::TypeDesc::UINT8);
        spec.attribute("Orientation", orientation);
        vel::test::writePicture(m_options.input.string(), spec,
                                std::get<std::vector<std::uint8_t>>(m_soft.samples));
    }

    velorn::BlurKernel run() {
        const velorn::Interrupt interrupt;
        velorn::runEstimate(m_options, interrupt, m_out, m_terminal, false);
        return velorn::KernelFile::read(m_options.output, std::nullopt);
    }

    vel::test::TemporaryFolder m_folder;
    velorn::RgbPixels m_soft;
    EstimateOptions m_options;
    std::ostringstream m_out;
    std::ostringstream m_terminal;
};

TEST_F(EstimateCommand, KernelIsWrittenAndPrinted) {
    writeSoft(1);
    const auto kernel = run();
    // The kernel ends with the blur, a level motion of seven pixels.
    EXPECT_EQ(kernel.width, 9);
    EXPECT_LE(kernel.height, 5);
    // Four lines describe the kernel.
    EXPECT_EQ(std::ranges::count(m_out.str(), '\n'), 4 + kernel.height);
    EXPECT_NE(m_out.str().find("██"), std::string::npos);
}

TEST_F(EstimateCommand, KernelRefersToThePictureAsDisplayed) {
    writeSoft(1);
    m_options.blind.turn = velorn::Turn::No;
    const auto stored = run();
    writeSoft(6);
    m_options.blind.largest = {5, 9};
    const auto shown = run();
    EXPECT_EQ(shown.width, stored.height);
    EXPECT_EQ(shown.height, stored.width);
    EXPECT_EQ(velorn::asStored(shown, 6).weights, stored.weights);
}

TEST_F(EstimateCommand, BlurIsDescribedInThePictureAsDisplayed) {
    m_options.blind.largest.reset();
    writeSoft(1);
    run();
    EXPECT_TRUE(
        std::regex_search(m_out.str(), std::regex("blur:        motion of about [5-9]"
                                                  "\\.[0-9] pixels at (0|1|17[89]) degrees?\n"
                                                  "kernel:      [0-9]+ by [0-9]+, candidate 1 of "
                                                  "[0-9]+\nconfidence:  [0-9]+ %\n")))
        << m_out.str();
    writeSoft(6);
    m_out.str("");
    run();
    EXPECT_TRUE(std::regex_search(m_out.str(), std::regex("at (8[89]|9[0-2]) degrees")))
        << m_out.str();
}

TEST_F(EstimateCommand, KernelIsOnlyPrintedWithoutAnOutput) {
    writeSoft(1);
    m_options.output.clear();
    const velorn::Interrupt interrupt;
    velorn::runEstimate(m_options, interrupt, m_out, m_terminal, false);
    EXPECT_NE(m_out.str().find("██"), std::string::npos);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(EstimateCommand, CandidatesAreOtherKernels) {
    writeSoft(1);
    const auto first = run();
    m_options.blind.candidate = 2;
    const auto second = run();
    EXPECT_TRUE(second.weights != first.weights);
    EXPECT_NE(m_out.str().find("candidate 2 of"), std::string::npos);
}

TEST_F(EstimateCommand, PartToLookAtRefersToThePictureAsDisplayed) {
    m_options.blind.largest.reset();
    writeSoft(1);
    m_options.blind.look = {10, 20, 180, 130};
    const auto stored = run();
    writeSoft(6);
    m_options.blind.look = {10, 10, 130, 180};
    EXPECT_EQ(velorn::asStored(run(), 6).weights, stored.weights);
}

TEST_F(EstimateCommand, PartToLookAtOutsideOfThePictureIsAFailureThatNamesItsSides) {
    writeSoft(6);
    m_options.blind.look = {10, 20, 180, 130};
    EXPECT_EQ(vel::test::failureText([&] { run(); }),
              velorn::quoted(m_options.input) + ": --look 10,20,180,130 is not inside of the "
                                                "picture, which is 160 by 200 pixels");
}

TEST_F(EstimateCommand, StartRefersToThePictureAsDisplayed) {
    m_options.blind.largest.reset();
    const auto guess = velorn::makeKernel({velorn::AnalyticBlur::Shape::Motion, 5.0f, 30.0f});
    const auto path = m_folder / "g.txt";
    vel::test::writeBytes(path.string(), velorn::KernelFile::encode(guess, path));
    m_options.blind.start = path;
    writeSoft(1);
    const auto stored = run();
    vel::test::writeBytes(path.string(),
                          velorn::KernelFile::encode(velorn::asShown(guess, 6), path));
    writeSoft(6);
    EXPECT_EQ(velorn::asStored(run(), 6).weights, stored.weights);
}

TEST_F(EstimateCommand, SheetIsWrittenWithTheKernel) {
    writeSoft(1);
    m_options.sheet = m_folder / "sheet.png";
    run();
    const auto sheet = velorn::ImageFile::read(m_options.sheet);
    EXPECT_GT(sheet.width(), 800);
    EXPECT_EQ(sheet.channels(), 3);
    EXPECT_EQ(m_folder.fileCount(), 3u);
}

TEST_F(EstimateCommand, PictureWithoutEdgesIsAFailureThatNamesItAndWritesNothing) {
    velorn::ImageFile grey(80, 60, 1, 8);
    vel::test::writeBytes(m_options.input.string(), grey.encode(m_options.input));
    const std::string text = vel::test::failureText([&] { run(); });
    EXPECT_NE(text.find("too few edges"), std::string::npos) << text;
    EXPECT_NE(text.find("in.tif"), std::string::npos) << text;
    EXPECT_FALSE(std::filesystem::exists(m_options.output));
}

TEST_F(EstimateCommand, OutputWithUnknownFormatIsRefused) {
    writeSoft(1);
    m_options.output = m_folder / "k.xyz";
    const std::string text = vel::test::failureText([&] { run(); });
    EXPECT_TRUE(text.starts_with("cannot write " + velorn::quoted(m_options.output) + ": "))
        << text;
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

} // namespace
