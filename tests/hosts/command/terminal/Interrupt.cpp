#include "hosts/command/terminal/Interrupt.h"

#include <gtest/gtest.h>

namespace {

using velorn::Interrupt;
using velorn::Interrupted;

TEST(Interrupt, SignalIsRecordedAndDoesNotEndTheProgram) {
    const Interrupt interrupt;
    EXPECT_FALSE(interrupt.isRequested());
    EXPECT_NO_THROW(interrupt.check());
    std::raise(SIGINT);
    EXPECT_TRUE(interrupt.isRequested());
    try {
        interrupt.check();
        FAIL();
    } catch (const Interrupted& interrupted) {
        EXPECT_EQ(interrupted.signal(), SIGINT);
    }
}

TEST(Interrupt, NumberOfTheSignalIsReported) {
    const Interrupt interrupt;
    std::raise(SIGTERM);
    try {
        interrupt.check();
        FAIL();
    } catch (const Interrupted& interrupted) {
        EXPECT_EQ(interrupted.signal(), SIGTERM);
    }
}

TEST(Interrupt, NewObjectHasNoSignalAndHandlersAreRestored) {
    struct sigaction before {};
    sigaction(SIGINT, nullptr, &before);
    {
        const Interrupt interrupt;
        std::raise(SIGINT);
    }
    {
        const Interrupt interrupt;
        EXPECT_FALSE(interrupt.isRequested());
    }
    struct sigaction after {};
    sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
}

TEST(Interrupt, CurrentObjectIsCheckedWithoutItsName) {
    {
        const Interrupt interrupt;
        EXPECT_NO_THROW(Interrupt::checkCurrent());
        std::raise(SIGHUP);
        EXPECT_THROW(Interrupt::checkCurrent(), Interrupted);
    }
    EXPECT_NO_THROW(Interrupt::checkCurrent());
}

TEST(Interrupt, IgnoredSignalsStayIgnored) {
    const auto former = std::signal(SIGINT, SIG_IGN);
    {
        const Interrupt interrupt;
        std::raise(SIGINT);
        EXPECT_FALSE(interrupt.isRequested());
    }
    std::signal(SIGINT, former);
}

} // namespace
