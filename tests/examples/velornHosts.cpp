// Runs the example hosts of libvelorn.
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/velorn/Scene.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>

namespace {

using vel::test::bytesOfFile;
using vel::test::ProgramResult;
using vel::test::runOnTerminal;
using vel::test::runProgram;
using vel::test::TemporaryFolder;
using vel::test::writeBytes;
using vel::test::writeText;
using velorntest::HostKernel;
using velorntest::HostPicture;
using velorntest::Layout;

std::string headOf(const Layout& layout) {
    return "P6\n" + std::to_string(layout.width) + " " + std::to_string(layout.height) + "\n255\n";
}

void writePpm(const std::string& name, HostPicture& picture) {
    const std::string head = headOf(picture.layout());
    std::vector<unsigned char> bytes(head.begin(), head.end());
    const std::vector<std::uint8_t> pixels = picture.pixels();
    bytes.insert(bytes.end(), pixels.begin(), pixels.end());
    writeBytes(name, bytes);
}

HostPicture readPpm(const std::string& name, const Layout& layout) {
    const std::vector<unsigned char> bytes = bytesOfFile(name);
    const std::string head = headOf(layout);
    HostPicture picture(layout);
    const auto size = static_cast<std::size_t>(picture.rowBytes() * layout.height);
    EXPECT_EQ(bytes.size(), head.size() + size);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + static_cast<int>(head.size())), head);
    if (bytes.size() == head.size() + size) {
        std::copy(bytes.begin() + static_cast<int>(head.size()), bytes.end(), picture.row(0));
    }
    return picture;
}

class VelornHosts : public testing::Test {
protected:
    VelornHosts() { writePpm(source, picture); }

    TemporaryFolder folder;
    std::string source = folder / "blurred.ppm";
    std::string target = folder / "restored.ppm";
    Layout layout{.width = 260, .height = 200};
    HostKernel disc = velorntest::madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = velorntest::scenePicture(layout, disc.get(), 0.7);
};

TEST_F(VelornHosts, HostInCRestoresWithADisc) {
    const ProgramResult result = runProgram({VELORN_HOST_C, source, target, "3"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("100 %\nnoise "), std::string::npos) << result.output;
    HostPicture restored = readPpm(target, layout);
    EXPECT_LT(distanceFromScene(restored), 0.7 * distanceFromScene(picture));
}

TEST_F(VelornHosts, HostInCPrintsTheMessageOfAFailure) {
    const ProgramResult result = runProgram({VELORN_HOST_C, source, target, "-3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors, "extent is -3, but must be above 0\n");
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST_F(VelornHosts, HostInCStopsWhenItIsInterrupted) {
    HostPicture large = velorntest::scenePicture({.width = 2600, .height = 2000}, nullptr);
    writePpm(source, large);
    const ProgramResult result = runOnTerminal({VELORN_HOST_C, source, target, "3"}, SIGINT);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.output.find("cancelled\r\n"), std::string::npos) << result.output;
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST_F(VelornHosts, HostInCppFindsTheKernelAndRestores) {
    const ProgramResult result = runProgram({VELORN_HOST_CPP, source, target});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("search: 100 %\nkernel of "), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("restoration: 100 %\nnoise "), std::string::npos) << result.output;
    HostPicture restored = readPpm(target, layout);
    EXPECT_LT(distanceFromScene(restored), 0.9 * distanceFromScene(picture));
}

TEST_F(VelornHosts, HostInCppPrintsTheMessageOfAFailure) {
    HostPicture tiny = velorntest::scenePicture({.width = 20, .height = 20}, nullptr);
    writePpm(source, tiny);
    const ProgramResult result = runProgram({VELORN_HOST_CPP, source, target});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors, "the picture is too small to find a kernel\n");
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST_F(VelornHosts, FilesThatAreNoPicturesFail) {
    writeText(source, "P6\n10 10\n255\nshort");
    EXPECT_EQ(runProgram({VELORN_HOST_C, source, target, "3"}).exitStatus, 1);
    EXPECT_EQ(runProgram({VELORN_HOST_CPP, source, target}).exitStatus, 1);
    writeText(source, "text");
    EXPECT_EQ(runProgram({VELORN_HOST_C, source, target, "3"}).exitStatus, 1);
    EXPECT_EQ(runProgram({VELORN_HOST_CPP, source, target}).exitStatus, 1);
    EXPECT_EQ(runProgram({VELORN_HOST_C, source}).exitStatus, 1);
    EXPECT_EQ(runProgram({VELORN_HOST_CPP, source}).exitStatus, 1);
}

} // namespace
