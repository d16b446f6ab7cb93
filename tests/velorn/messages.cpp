#include "tests/velorn/failure.h"
#include "tests/velorn/HostKernel.h"

#include <string>
#include <thread>

namespace velorntest {
namespace {

void failHere() {
    EXPECT_VELORN_INVALID(velornMakeKernel(9, 1.0f, 0.0f, nullptr), "kernel is null");
}

TEST(Version, HasThreeNumbers) {
    EXPECT_STREQ(velornVersion(), "1.1.0");
}

TEST(LastMessage, IsEmptyOnANewThread) {
    failHere();
    std::string message = "not read";
    std::thread([&message] { message = velornLastMessage(); }).join();
    EXPECT_EQ(message, "");
}

TEST(LastMessage, BelongsToItsThread) {
    failHere();
    std::thread([] { madeKernel(VELORN_BLUR_DISC, 2.0f); }).join();
    EXPECT_STREQ(velornLastMessage(), "kernel is null");
}

TEST(LastMessage, IsEmptyAfterACallThatSucceeds) {
    failHere();
    madeKernel(VELORN_BLUR_DISC, 2.0f);
    EXPECT_STREQ(velornLastMessage(), "");
}

TEST(LastMessage, SurvivesFunctionsWithoutAStatus) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 2.0f);
    failHere();
    velornVersion();
    velornKernelWidth(kernel.get());
    velornKernelHeight(kernel.get());
    velornKernelValues(kernel.get());
    velornFreeKernel(nullptr);
    EXPECT_STREQ(velornLastMessage(), "kernel is null");
}

} // namespace
} // namespace velorntest
