// The list of exports and ornCreateKernel, tested through the shared library.
#include "tests/frame/exportedNames.h"
#include "tests/frame/LoadedLibrary.h"
#include "tests/support/NullWhenOutOfMemory.h"

#include <cmath>
#include <set>
#include <string>
#include <vector>

extern "C" int callFromC(decltype(ornCreateKernel)* createKernel, float* values);

namespace {

using vel::test::exportedNames;
using vel::test::LoadedLibrary;

struct Kernel {
    explicit Kernel(std::size_t capacity = 4096) : values(capacity, -1.0f) {
        record.data = values.data();
    }
    std::vector<float> values;
    KernelRecord record{-11, -12, -13, -14, nullptr};
};

class Exports : public ::testing::Test {
protected:
    LoadedLibrary library;
    decltype(ornCreateKernel)* createKernel = VELORN_FIND(library, ornCreateKernel);
    decltype(getErrMsg)* errorMessage = VELORN_FIND(library, getErrMsg);
};

TEST_F(Exports, AreTheDocumentedFunctionsAndNothingElse) {
    const std::set<std::string> expected{
        "ornDeblurSharpen", "ornBlurEstimate", "ornCreateKernel",   "velSetupLib", "setDebugTrace",
        "getErrMsg",        "PSImage2QImage",  "PSImageICC2QImage", "psC1U8toU15", "psC1U15toU8"};
    EXPECT_EQ(exportedNames(library), expected);
}

TEST_F(Exports, SetupAndTraceReturnZeroAndChangeNothing) {
    auto* const setup = VELORN_FIND(library, velSetupLib);
    auto* const trace = VELORN_FIND(library, setDebugTrace);
    const std::string text = errorMessage();
    EXPECT_EQ(setup(-1, 0), 0);
    EXPECT_EQ(setup(4, 4), 0);
    EXPECT_EQ(trace(), 0);
    EXPECT_EQ(trace(1, "anything", 2.0), 0);
    EXPECT_EQ(errorMessage(), text);
}

TEST_F(Exports, CreateKernelRefusesNullDataAndLeavesTheRecordUnchanged) {
    KernelRecord record{-11, -12, -13, -14, nullptr};
    EXPECT_EQ(createKernel(0, 1.0f, 0.0f, &record), VELORN_BAD_ARGUMENT);
    EXPECT_EQ(record.width, -11);
    EXPECT_EQ(record.height, -12);
    EXPECT_EQ(record.anchorX, -13);
    EXPECT_EQ(record.anchorY, -14);
    EXPECT_STREQ(errorMessage(), "");
    EXPECT_EQ(createKernel(0, 1.0f, 0.0f, nullptr), VELORN_BAD_ARGUMENT);
}

TEST_F(Exports, CreateKernelRefusesUnknownTypesAndLeavesTheRecordUnchanged) {
    for (const int32_t type : {3, -1, 100}) {
        Kernel kernel;
        EXPECT_EQ(createKernel(type, 1.0f, 0.0f, &kernel.record), VELORN_BAD_ARGUMENT);
        EXPECT_EQ(kernel.record.width, -11);
        EXPECT_EQ(kernel.record.anchorY, -14);
        EXPECT_EQ(kernel.values[0], -1.0f);
    }
}

TEST_F(Exports, CreateKernelFillsTheRecordWithoutRowPadding) {
    Kernel kernel;
    ASSERT_EQ(createKernel(2, 5.0f, 90.0f, &kernel.record), VELORN_OK);
    EXPECT_EQ(kernel.record.width, 3);
    EXPECT_EQ(kernel.record.height, 5);
    EXPECT_EQ(kernel.record.anchorX, 1);
    EXPECT_EQ(kernel.record.anchorY, 2);
    for (std::size_t row = 0; row < 5; ++row) {
        EXPECT_NEAR(kernel.values[3 * row + 1], 0.2, 1e-5);
    }
    EXPECT_EQ(kernel.values[15], -1.0f);
}

TEST_F(Exports, CreateKernelCreatesEachShape) {
    Kernel gaussian;
    ASSERT_EQ(createKernel(0, 1.0f, 99.0f, &gaussian.record), VELORN_OK);
    EXPECT_EQ(gaussian.record.width, 7);
    Kernel disc;
    ASSERT_EQ(createKernel(1, 1.0f, 99.0f, &disc.record), VELORN_OK);
    EXPECT_EQ(disc.record.width, 3);
    EXPECT_NEAR(disc.values[4], 0.31831, 1e-5);
    EXPECT_NEAR(disc.values[1], 0.14534, 1e-5);
    EXPECT_NEAR(disc.values[0], 0.02508, 1e-5);
    Kernel line;
    ASSERT_EQ(createKernel(2, 5.0f, 0.0f, &line.record), VELORN_OK);
    EXPECT_EQ(line.record.width, 5);
    EXPECT_EQ(line.record.height, 1);
    for (std::size_t x = 0; x < 5; ++x) {
        EXPECT_FLOAT_EQ(line.values[x], 0.2f);
    }
}

TEST_F(Exports, KernelTooLargeToAllocateFailsAndLeavesTheLibraryIdle) {
    Kernel kernel;
    EXPECT_EQ(createKernel(0, INFINITY, 0.0f, &kernel.record), VELORN_FAILURE);
    EXPECT_EQ(createKernel(1, 1e9f, 0.0f, &kernel.record), VELORN_FAILURE);
    EXPECT_EQ(createKernel(2, 1e9f, 45.0f, &kernel.record), VELORN_FAILURE);
    EXPECT_EQ(kernel.record.width, -11);
    EXPECT_EQ(createKernel(2, 5.0f, 0.0f, &kernel.record), VELORN_OK);
}

TEST_F(Exports, NaNArgumentsGiveAKernelOfOneElement) {
    for (const int32_t type : {0, 1, 2}) {
        Kernel kernel;
        EXPECT_EQ(createKernel(type, NAN, NAN, &kernel.record), VELORN_OK);
        EXPECT_EQ(kernel.record.width, 1);
        EXPECT_EQ(kernel.record.height, 1);
    }
}

TEST_F(Exports, HeaderCompilesInAHostWrittenInC) {
    std::vector<float> values(5);
    EXPECT_TRUE(callFromC(createKernel, values.data()));
    EXPECT_FLOAT_EQ(values[2], 0.2f);
}

} // namespace
