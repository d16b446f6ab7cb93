#include "hosts/command/options/FormatOption.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;
using vel::test::parsedAs;
using vel::test::usageFailureOf;

std::string previewFormat(const char* output, const char* format) {
    return parsedAs<velorn::PreviewOptions>({"preview", "in.png", output, "--format", format})
        .format;
}

std::string previewFailure(const char* output, const char* format) {
    return usageFailureOf({"preview", "in.png", output, "--format", format});
}

std::string kernelFailure(const char* output, const char* format) {
    return usageFailureOf({"kernel", "disc", "2", "-o", output, "--format", format});
}

TEST(FormatOption, NamesAndExtensionsGiveTheFormat) {
    EXPECT_EQ(previewFormat("-", "jpeg"), "jpg");
    EXPECT_EQ(previewFormat("-", "tif"), previewFormat("-", "TIFF"));
    EXPECT_EQ(previewFormat("plain", "png"), "png");
    EXPECT_EQ(previewFormat("scan.2024", "png"), "png");
    EXPECT_EQ(previewFormat("a.png", "png"), "png");
}

TEST(FormatOption, ExtensionsOfOtherFormatsAreRefused) {
    EXPECT_NE(previewFailure("a.jpg", "png").find("another format"), std::string::npos);
    EXPECT_NE(previewFailure("a.heic", "png").find("another format"), std::string::npos);
    EXPECT_NE(kernelFailure("k.png", "txt").find("another format"), std::string::npos);
    EXPECT_NE(kernelFailure("k.TXT", "png").find("another format"), std::string::npos);
    EXPECT_EQ(kernelFailure("k.TXT", "txt"), "");
}

TEST(FormatOption, OtherNamesAreRefused) {
    for (const char* name : {"heif", "jpge", "", "txt"}) {
        EXPECT_EQ(previewFailure("-", name).find("--format must be jpeg, "), 0u) << name;
    }
    EXPECT_EQ(kernelFailure("-", "heif").find("--format must be txt, csv, jpeg, "), 0u);
    EXPECT_NE(previewFailure("-", "jpge").find("did you mean jpeg?"), std::string::npos);
}

TEST(FormatOption, StandardOutputNeedsIt) {
    EXPECT_EQ(usageFailureOf({"preview", "in.png", "-"})
                  .find("'-', the standard output, needs --format: jpeg, "),
              0u);
    EXPECT_EQ(usageFailureOf({"kernel", "disc", "2", "-o", "-"})
                  .find("'-', the standard output, needs --format: txt, csv, jpeg, "),
              0u);
}

TEST(FormatOption, OfEstimateBelongsToTheStandardOutputThenToTheKernel) {
    const auto both = parsedAs<velorn::EstimateOptions>(
        {"estimate", "in.png", "-o", "k.txt", "--sheet", "-", "--format", "png"});
    EXPECT_EQ(both.format, "");
    EXPECT_EQ(both.sheetFormat, "png");
    const auto kernel = parsedAs<velorn::EstimateOptions>(
        {"estimate", "in.png", "-o", "-", "--sheet", "s.png", "--format", "txt"});
    EXPECT_EQ(kernel.format, "txt");
    EXPECT_EQ(kernel.sheetFormat, "");
    EXPECT_NE(usageFailureOf({"estimate", "in.png", "--sheet", "-", "--format", "txt"}), "");
    EXPECT_EQ(usageFailureOf({"estimate", "in.png", "--format", "png"}),
              "--format needs --output or --sheet");
}

TEST(FormatOption, SelectsTheFormatOfTheOutput) {
    EXPECT_EQ(velorn::outputFormat("a.png", "").name, "PNG");
    EXPECT_EQ(velorn::outputFormat("-", "jpg").name, "JPEG");
    EXPECT_THROW(velorn::outputFormat("plain", ""), velorn::Failure);
    EXPECT_EQ(velorn::kernelName("k.txt", ""), "k.txt");
    EXPECT_EQ(velorn::kernelName("-", "csv"), "standard output.csv");
}

} // namespace
