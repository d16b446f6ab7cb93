#include "hosts/command/kernels/KernelFile.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/pictures/ImageFile.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using velorn::BlurKernel;
using velorn::Failure;
using velorn::KernelFile;
using velorn::makeKernel;
using Shape = velorn::AnalyticBlur::Shape;
using vel::test::TemporaryFolder;
using vel::test::writeBytes;
using vel::test::writeText;

std::string failureOf(const std::filesystem::path& path, std::optional<int> scale = {}) {
    return vel::test::failureText([&] { KernelFile::read(path, scale); });
}

const std::vector<velorn::AnalyticBlur> kBlurs{{Shape::Gaussian, 2.3f, 0.0f},
                                               {Shape::Disc, 4.0f, 0.0f},
                                               {Shape::Motion, 5.0f, 0.0f},
                                               {Shape::Motion, 17.5f, 33.0f},
                                               {Shape::Gaussian, 0.1f, 0.0f}};

TEST(KernelFile, TextReadsBackExactly) {
    const TemporaryFolder folder;
    for (const auto& blur : kBlurs) {
        const BlurKernel kernel = makeKernel(blur);
        writeBytes(folder / "k.txt", KernelFile::encode(kernel, "k.txt"));
        const BlurKernel back = KernelFile::read(folder / "k.txt", {});
        EXPECT_EQ(back.width, kernel.width);
        EXPECT_EQ(back.height, kernel.height);
        EXPECT_EQ(back.weights, kernel.weights);
    }
}

TEST(KernelFile, PictureReadsBackWithTheSameWeights) {
    const TemporaryFolder folder;
    for (const char* name : {"k.png", "k.tif"}) {
        for (const auto& blur : kBlurs) {
            const BlurKernel kernel = makeKernel(blur);
            writeBytes(folder / name, KernelFile::encode(kernel, name));
            const BlurKernel back = KernelFile::read(folder / name, {});
            ASSERT_EQ(back.width, kernel.width) << name;
            ASSERT_EQ(back.height, kernel.height) << name;
            const float peak = *std::max_element(kernel.weights.begin(), kernel.weights.end());
            for (std::size_t i = 0; i < kernel.weights.size(); ++i) {
                EXPECT_NEAR(back.weights[i], kernel.weights[i], peak * 3e-5f);
            }
        }
    }
}

TEST(KernelFile, PictureIsEnlargedAndItsLargestWeightIsWhite) {
    const TemporaryFolder folder;
    writeBytes(folder / "k.png",
               KernelFile::encode(makeKernel({Shape::Disc, 3.0f, 0.0f}), "k.png"));
    const auto picture = velorn::ImageFile::read(folder / "k.png");
    EXPECT_GT(picture.width(), 200);
    EXPECT_EQ(picture.channels(), 1);
    EXPECT_EQ(std::ranges::max(std::get<std::vector<std::uint16_t>>(picture.samples())), 65535);
}

TEST(KernelFile, GivenScaleOverridesTheDescription) {
    const TemporaryFolder folder;
    writeBytes(folder / "k.png",
               KernelFile::encode(makeKernel({Shape::Disc, 3.0f, 0.0f}), "k.png"));
    const int side = velorn::ImageFile::read(folder / "k.png").width();
    EXPECT_EQ(KernelFile::read(folder / "k.png", side).width, 1);
    EXPECT_NE(failureOf(folder / "k.png", side - 1).find("are not multiples of the kernel scale"),
              std::string::npos);
}

TEST(KernelFile, ColoursOfAnEightBitPictureAreAveraged) {
    const TemporaryFolder folder;
    velorn::ImageFile picture(3, 1, 3, 8);
    std::get<std::vector<std::uint8_t>>(picture.samples()) = {0, 30, 60, 60, 60, 60, 90, 90, 0};
    writeBytes(folder / "k.png", picture.encode("k.png"));
    const BlurKernel kernel = KernelFile::read(folder / "k.png", {});
    ASSERT_EQ(kernel.width, 3);
    EXPECT_FLOAT_EQ(kernel.weights[0], 0.2f);
    EXPECT_FLOAT_EQ(kernel.weights[1], 0.4f);
    EXPECT_FLOAT_EQ(kernel.weights[2], 0.4f);
}

TEST(KernelFile, TextMayContainCommasCommentsAndEmptyLines) {
    const TemporaryFolder folder;
    writeText(folder / "k.csv", "# a kernel\r\n\r\n0,1;0\r\n1, 4, 1 # the middle\r\n\t0 +1 0\r\n");
    const BlurKernel kernel = KernelFile::read(folder / "k.csv", {});
    EXPECT_EQ(kernel.width, 3);
    EXPECT_EQ(kernel.height, 3);
    EXPECT_FLOAT_EQ(kernel.at(1, 1), 0.5f);
    EXPECT_FLOAT_EQ(kernel.at(2, 1), 0.125f);
}

TEST(KernelFile, MalformedTextIsAFailureThatNamesFileAndLine) {
    const TemporaryFolder folder;
    const auto path = folder / "k.txt";
    const std::string name = velorn::quoted(path);
    writeText(path, "1 2 3\n4 5\n");
    EXPECT_EQ(failureOf(path), name + " line 2: 2 numbers where the first row has 3");
    writeText(path, "1 x 3\n");
    EXPECT_EQ(failureOf(path), name + " line 1: 'x' is not a number");
    writeText(path, "1 2.5.1 3\n");
    EXPECT_EQ(failureOf(path), name + " line 1: '2.5.1' is not a number");
    writeText(path, "+\n");
    EXPECT_EQ(failureOf(path), name + " line 1: '+' is not a number");
    writeText(path, "1 1e99 3\n");
    EXPECT_EQ(failureOf(path), name + " line 1: '1e99' is not a number");
    writeText(path, "1 inf 3\n");
    EXPECT_NE(failureOf(path).find("finite"), std::string::npos);
    writeText(path, "1 nan 3\n");
    EXPECT_NE(failureOf(path).find("finite"), std::string::npos);
    writeText(path, "\n# nothing\n");
    EXPECT_EQ(failureOf(path), name + " contains no numbers");
    writeText(path, "0 0 0\n");
    EXPECT_NE(failureOf(path).find("is not positive"), std::string::npos);
    writeText(path, "1 1\n1 1\n");
    EXPECT_NE(failureOf(path).find("must be odd"), std::string::npos);
}

TEST(KernelFile, MissingFilesAndFoldersAreFailuresThatNameTheFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(failureOf(folder / "none.txt"),
              "cannot read " + velorn::quoted(folder / "none.txt") + ": No such file or directory");
    EXPECT_EQ(failureOf(folder / "none.png"),
              "cannot read " + velorn::quoted(folder / "none.png") + ": No such file or directory");
    std::filesystem::create_directory(folder / "f.txt");
    EXPECT_NE(failureOf(folder / "f.txt").find("it is a folder"), std::string::npos);
}

TEST(KernelFile, PicturesThatGiveNoKernelAreRefused) {
    const TemporaryFolder folder;
    writeBytes(folder / "k.png", velorn::ImageFile(5, 5, 1, 8).encode("k.png"));
    EXPECT_NE(failureOf(folder / "k.png").find("is not positive"), std::string::npos);
    writeBytes(folder / "k.png", velorn::ImageFile(4, 5, 1, 8).encode("k.png"));
    EXPECT_NE(failureOf(folder / "k.png").find("must be odd"), std::string::npos);
    writeBytes(folder / "k.png", velorn::ImageFile(2001, 5, 1, 8).encode("k.png"));
    EXPECT_NE(failureOf(folder / "k.png").find("larger than 511"), std::string::npos);
}

} // namespace
