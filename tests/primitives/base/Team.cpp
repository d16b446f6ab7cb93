#include "velimproclib/primitives/base/Team.h"

#include "tests/support/ControlBits.h"
#include "tests/support/Threads.h"
#include "velimproclib/primitives/base/TeamLoop.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace vel;

/// Calls `visit` on every thread of the runtime's team, outside of the code under test.
template <class Visit>
void onEveryThread(int threads, const Visit& visit) {
#pragma omp parallel num_threads(threads)
    visit();
}

/// Every way in which work reaches other threads, each calling `check` many times.
std::vector<std::function<void(const std::function<void()>&)>> waysIntoATeam() {
    return {
        [](const auto& check) { openTeam(check); },
        [](const auto& check) { runSideBySide(check, check); },
        [](const auto& check) { forEachRow(64, [&](int) { check(); }); },
        [](const auto& check) { runInTeam([&] { forEachPiece(64, [&](int, int) { check(); }); }); },
        [](const auto& check) {
            // Idle threads of the outer team run the pieces of both sections.
            const auto pieces = [&] {
                runInTeam([&] { forEachPiece(64, [&](int, int) { check(); }); });
            };
            runSideBySide(pieces, pieces);
        },
    };
}

class WorkersUnderOtherWords : public testing::TestWithParam<std::size_t> {
protected:
    void SetUp() override {
        if (!test::kHasControlWord) {
            GTEST_SKIP() << "no floating-point control word on this processor";
        }
    }
    static constexpr int kThreads = 4;
    test::ThreadCount m_threads{kThreads};
};

TEST_P(WorkersUnderOtherWords, RunUnderTheWordOfTheCallerAndGetTheirOwnBack) {
    // The workers exist before the call and flush nothing; the caller does.
    const test::ControlBits plain(0);
    onEveryThread(kThreads, [] { EXPECT_FALSE(test::flushesDenormals()); });
    {
        const test::ControlBits flushing(test::kFlushDenormals);
        std::atomic<int> calls = 0;
        std::atomic<int> flushed = 0;
        waysIntoATeam()[GetParam()]([&] {
            ++calls;
            flushed += test::flushesDenormals() ? 1 : 0;
        });
        EXPECT_GE(calls, 2);
        EXPECT_EQ(flushed, calls);
        EXPECT_TRUE(test::flushesDenormals());
    }
    onEveryThread(kThreads, [] { EXPECT_FALSE(test::flushesDenormals()); });
}

TEST(Team, TasksOnTheHostsOwnTeamRunUnderTheWordOfTheCaller) {
    if (!test::kHasControlWord) {
        GTEST_SKIP() << "no floating-point control word on this processor";
    }
    const test::ControlBits plain(0);
    std::atomic<int> wrong = 0;
#pragma omp parallel num_threads(4)
#pragma omp single
    {
        const test::ControlBits flushing(test::kFlushDenormals);
        runInTeam([&] {
            // Long enough for the other threads to wake up and take pieces.
            forEachPiece(64, [&](int, int) {
                for (int i = 0; i < 20000; ++i) {
                    wrong += test::flushesDenormals() ? 0 : 1;
                }
            });
        });
    }
    EXPECT_EQ(wrong, 0);
    onEveryThread(4, [] { EXPECT_FALSE(test::flushesDenormals()); });
}

INSTANTIATE_TEST_SUITE_P(Team, WorkersUnderOtherWords,
                         testing::Range(std::size_t{0}, std::size_t{5}));

TEST(Team, OpensAtMostTheGivenNumberOfThreads) {
    std::atomic<int> threads = 0;
    openTeam(3, [&] { ++threads; });
    EXPECT_GE(threads, 1);
    EXPECT_LE(threads, 3);
}

TEST(Team, BothSidesRunAndAFailureOfOneReachesTheCaller) {
    test::forThreadCounts([] {
        std::atomic<int> runs = 0;
        const auto fail = [&] {
            ++runs;
            throw 101;
        };
        const auto work = [&] { ++runs; };
        EXPECT_THROW(runSideBySide(fail, work), int);
        EXPECT_THROW(runSideBySide(work, fail), int);
        EXPECT_EQ(runs, 4);
    });
}

TEST(Team, EveryRowRunsOnceAndAFailureReachesTheCaller) {
    test::forThreadCounts([] {
        for (const int rows : {0, 1, 2, 7, 100}) {
            std::vector<std::atomic<int>> runs(static_cast<std::size_t>(rows));
            forEachRow(rows, [&](int row) { ++runs[static_cast<std::size_t>(row)]; });
            for (const auto& run : runs) {
                EXPECT_EQ(run, 1);
            }
        }
        std::atomic<int> rows = 0;
        const auto failInOneRow = [&](int row) {
            ++rows;
            if (row == 3) {
                throw "a failure";
            }
        };
        EXPECT_THROW(forEachRow(10, failInOneRow), const char*);
        EXPECT_EQ(rows, 10);
    });
}

} // namespace
