#include "velimproclib/frame/notifyProgress.h"

#include <gtest/gtest.h>

namespace {

using vel::notifyProgress;

int32_t refuse(int32_t, int32_t, void*) {
    return 0;
}

TEST(NotifyProgress, SetsTheCounterWithoutACallback) {
    ProgressRecord progress{10, 100, nullptr, nullptr, 3};
    EXPECT_TRUE(notifyProgress(progress, 42));
    EXPECT_EQ(progress.current, 42);
}

TEST(NotifyProgress, LimitsTheCounter) {
    ProgressRecord progress{10, 100, nullptr, nullptr, 3};
    notifyProgress(progress, 101);
    EXPECT_EQ(progress.current, 100);
    notifyProgress(progress, std::int64_t{1} << 40);
    EXPECT_EQ(progress.current, 100);
    notifyProgress(progress, -(std::int64_t{1} << 40));
    EXPECT_EQ(progress.current, INT32_MIN);
}

TEST(NotifyProgress, ZeroFromTheCallbackAsksForCancellation) {
    int data = 0;
    ProgressRecord progress{10, 100, refuse, &data, 3};
    EXPECT_FALSE(notifyProgress(progress, 4));
    progress.userData = nullptr;
    EXPECT_TRUE(notifyProgress(progress, 5));
}

} // namespace
