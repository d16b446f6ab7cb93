// What loading the shared library does to the process and to the loading thread.
#include "tests/frame/LoadedLibrary.h"

#include <cstdlib>
#include <xmmintrin.h>

namespace {

using vel::test::LoadedLibrary;

TEST(Attach, LibraryRemainsInTheProcessAfterTheHostClosesIt) {
    { const LoadedLibrary library; }
    EXPECT_TRUE(LoadedLibrary::staysInTheProcess());
}

// Runs in a process of its own, because only the first load in a process attaches.
TEST(AttachDeathTest, LeavesTheAttachingThreadFlushingDenormals) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto flagsAreSetByLoading = [] {
        constexpr unsigned kDenormalsAreZero = 1u << 6;
        constexpr unsigned kUnderflowMasked = 1u << 11;
        constexpr unsigned kFlushToZero = 1u << 15;
        constexpr unsigned kAll = kDenormalsAreZero | kUnderflowMasked | kFlushToZero;
        _mm_setcsr(_mm_getcsr() & ~kAll);
        const LoadedLibrary library;
        return (_mm_getcsr() & kAll) == kAll;
    };
    EXPECT_EXIT(std::_Exit(flagsAreSetByLoading() ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace
