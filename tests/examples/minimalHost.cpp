// Runs the example host.
#include "tests/support/RunProgram.h"

#include <gtest/gtest.h>
#include <regex>

namespace {

using vel::test::ProgramResult;
using vel::test::runProgram;

TEST(MinimalHost, RestoresCancelsAndPrintsTheTextOfAFailure) {
    const ProgramResult result = runProgram({MINIMAL_HOST, VELORN_LIBRARY});
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("disc of radius 2.0: 5 by 5 weights"), std::string::npos);
    EXPECT_NE(result.output.find("100 %\nstatus 1;"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("status 0: cancelled"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("status -5: ornDeblurSharpen - step shorter than a row"),
              std::string::npos)
        << result.output;
}

TEST(MinimalHost, RestoredPictureIsAtMostHalfAsFarFromTheSharpOne) {
    const ProgramResult result = runProgram({MINIMAL_HOST, VELORN_LIBRARY});
    std::smatch distances;
    ASSERT_TRUE(std::regex_search(result.output, distances,
                                  std::regex("blurred ([0-9.]+), restored ([0-9.]+)")))
        << result.output;
    EXPECT_LT(std::stod(distances[2]), 0.5 * std::stod(distances[1])) << result.output;
}

TEST(MinimalHost, MissingLibraryIsReported) {
    const ProgramResult result = runProgram({MINIMAL_HOST, "/nowhere/libvelorncore10.so"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find("/nowhere/libvelorncore10.so"), std::string::npos);
}

TEST(MinimalHost, LibraryWithoutTheFunctionsIsReported) {
    const ProgramResult result = runProgram({MINIMAL_HOST, "libm.so.6"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors, "the library has no ornCreateKernel\n");
}

} // namespace
