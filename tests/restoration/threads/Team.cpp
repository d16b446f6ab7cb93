#include "restoration/threads/Team.h"

#include "tests/restoration/threads/RefusedThreads.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <latch>
#include <limits>
#include <sched.h>
#include <set>
#include <stdexcept>
#include <xmmintrin.h>

namespace restoration {
namespace {

struct Calls {
    std::vector<double> values;
    std::size_t cancelAt = std::numeric_limits<std::size_t>::max();

    HostProgress host() {
        return {[](double done, void* data) -> std::int32_t {
                    auto& calls = *static_cast<Calls*>(data);
                    calls.values.push_back(done);
                    return calls.values.size() < calls.cancelAt;
                },
                this};
    }
};

TEST(Team, EveryPieceRunsOnce) {
    for (const int threads : {1, 2, 3, 8}) {
        Team team(threads, {});
        std::vector<std::atomic<int>> runs(101);
        team.forEach(runs.size(), [&](std::size_t piece, int) { ++runs[piece]; });
        for (const std::atomic<int>& count : runs) {
            EXPECT_EQ(count, 1);
        }
    }
}

TEST(Team, RunsLoopAfterLoop) {
    Team team(2, {});
    std::atomic<int> sum = 0;
    for (int i = 0; i < 200; ++i) {
        team.forEach(3, [&](std::size_t piece, int) { sum += static_cast<int>(piece); });
    }
    team.forEach(0, [&](std::size_t, int) { sum = 0; });
    EXPECT_EQ(sum, 600);
}

TEST(Team, WorkersRunAtTheSameTimeAndHaveNumbersOfTheirOwn) {
    constexpr int kThreads = 3;
    Team team(kThreads, {});
    std::latch all(kThreads);
    std::mutex mutex;
    std::set<int> numbers;
    team.forEach(kThreads, [&](std::size_t, int worker) {
        all.arrive_and_wait();
        const std::lock_guard lock(mutex);
        numbers.insert(worker);
    });
    EXPECT_EQ(numbers, (std::set<int>{0, 1, 2}));
}

TEST(Team, WorksWithTheThreadsThatTheSystemStarts) {
    for (const int allowed : {1, 2}) {
        Team team(8, {});
        const RefusedThreads refused(allowed);
        std::atomic<int> runs = 0;
        int largest = 0;
        std::mutex mutex;
        team.forEach(40, [&](std::size_t, int worker) {
            ++runs;
            const std::lock_guard lock(mutex);
            largest = std::max(largest, worker);
        });
        EXPECT_EQ(runs, 40);
        EXPECT_LT(largest, allowed);
    }
}

TEST(Team, WorksOnTheCallingThreadWhereTheSystemStartsNone) {
    const unsigned own = _mm_getcsr();
    const RefusedThreads refused(0);
    Calls calls;
    Team team(2, calls.host());
    team.progress().beginPhase(1.0, 3);
    std::vector<std::thread::id> threads;
    team.forEach(3, [&](std::size_t, int) {
        threads.push_back(std::this_thread::get_id());
        team.progress().advance();
    });
    EXPECT_EQ(threads, std::vector<std::thread::id>(3, std::this_thread::get_id()));
    EXPECT_EQ(calls.values.back(), 1.0);
    EXPECT_EQ(_mm_getcsr() & 0x8040u, own & 0x8040u);
}

TEST(Team, TheHostCancelsWorkOnTheCallingThread) {
    const RefusedThreads refused(0);
    Calls calls;
    calls.cancelAt = 3;
    Team team(2, calls.host());
    int runs = 0;
    EXPECT_THROW(team.forEach(10, [&](std::size_t, int) { ++runs; }), Failure);
    EXPECT_EQ(runs, 2);
}

TEST(Team, RethrowsTheFailureOfAPieceAndStartsNoFurtherPiece) {
    Team team(1, {});
    std::size_t last = 0;
    EXPECT_THROW(team.forEach(100,
                              [&](std::size_t piece, int) {
                                  last = piece;
                                  if (piece == 3) {
                                      throw std::length_error("three");
                                  }
                              }),
                 std::length_error);
    EXPECT_EQ(last, 3u);
}

TEST(Team, TheFirstFailureWinsOverThoseThatItCauses) {
    Team team(2, {});
    std::latch both(2);
    EXPECT_THROW(team.forEach(2,
                              [&](std::size_t piece, int) {
                                  both.arrive_and_wait();
                                  if (piece == 0) {
                                      throw std::bad_alloc();
                                  }
                                  while (true) {
                                      team.cancellation().check();
                                      std::this_thread::yield();
                                  }
                              }),
                 std::bad_alloc);
}

TEST(Team, TheHostCancelsWhilePiecesRun) {
    Calls calls;
    calls.cancelAt = 3;
    Team team(2, calls.host());
    try {
        team.forEach(2, [&](std::size_t, int) {
            while (true) {
                team.cancellation().check();
                std::this_thread::yield();
            }
        });
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), VELORN_STATUS_CANCELLED);
    }
    EXPECT_EQ(calls.values.size(), 3u);
}

TEST(Team, AFailureOfTheProgressFunctionEndsTheCall) {
    Team team(1, {[](double done, void*) -> std::int32_t {
                      if (done > 0.0) {
                          throw std::out_of_range("progress");
                      }
                      return 1;
                  },
                  nullptr});
    team.progress().beginPhase(1.0, 2);
    EXPECT_THROW(team.forEach(1,
                              [&](std::size_t, int) {
                                  team.progress().advance();
                                  while (true) {
                                      team.cancellation().check();
                                      std::this_thread::yield();
                                  }
                              }),
                 std::out_of_range);
}

TEST(Team, ProgressRisesToExactlyOneOnTheCallingThread) {
    struct Seen {
        Calls calls;
        std::thread::id caller = std::this_thread::get_id();
        bool isOnCaller = true;
        std::atomic<int> count = 0;
    } seen;
    Team team(2, {[](double done, void* data) -> std::int32_t {
                      auto& s = *static_cast<Seen*>(data);
                      s.calls.values.push_back(done);
                      s.isOnCaller = s.isOnCaller && std::this_thread::get_id() == s.caller;
                      ++s.count;
                      return 1;
                  },
                  &seen});
    team.progress().beginPhase(0.25, 1);
    team.forEach(1, [&](std::size_t, int) {
        team.progress().advance();
        while (seen.count < 3) {
            std::this_thread::yield();
        }
    });
    team.progress().beginPhase(1.0, 3);
    team.forEach(3, [&](std::size_t, int) { team.progress().advance(); });
    team.finish();
    const std::vector<double>& values = seen.calls.values;
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
    EXPECT_TRUE(seen.isOnCaller);
    EXPECT_EQ(values.front(), 0.0);
    EXPECT_EQ(values[2], 0.25);
    EXPECT_EQ(values.back(), 1.0);
}

TEST(Team, PiecesAreTheUnitsOfOpenPhases) {
    Team team(2, {});
    team.progress().beginOpenPhase(1.0, 10);
    team.forEach(30, [](std::size_t, int) {});
    EXPECT_EQ(team.progress().done(), 0.75);
}

TEST(Team, TheLastReportCanStillCancel) {
    Calls calls;
    calls.cancelAt = 2;
    Team team(1, calls.host());
    team.forEach(1, [](std::size_t, int) {});
    EXPECT_THROW(team.finish(), Failure);
}

TEST(Team, WorkersRoundLikeTheCallerAndFlushDenormals) {
    const unsigned own = _mm_getcsr();
    _MM_SET_ROUNDING_MODE(_MM_ROUND_UP);
    unsigned word = 0;
    {
        Team team(1, {});
        team.run([&] { word = _mm_getcsr(); });
    }
    _mm_setcsr(own);
    EXPECT_EQ(word & 0x6000, static_cast<unsigned>(_MM_ROUND_UP));
    EXPECT_EQ(word & 0x8040, 0x8040u);
    EXPECT_EQ(_mm_getcsr(), own);
}

TEST(Team, WorkersBlockSignals) {
    sigset_t mask;
    Team team(1, {});
    team.run([&] { pthread_sigmask(SIG_BLOCK, nullptr, &mask); });
    EXPECT_EQ(sigismember(&mask, SIGINT), 1);
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGINT), 0);
}

TEST(Team, ZeroThreadsMeansTheProcessorsThatTheProcessMayUse) {
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    EXPECT_EQ(Team(0, {}).threads(), CPU_COUNT(&all));
    int first = 0;
    while (!CPU_ISSET(first, &all)) {
        ++first;
    }
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(Team(0, {}).threads(), 1);
    ASSERT_EQ(sched_setaffinity(0, sizeof all, &all), 0);
}

} // namespace
} // namespace restoration
