#include "velimproclib/primitives/base/TeamLoop.h"

#include "tests/support/Threads.h"

#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

namespace {

using namespace vel;

std::vector<int> countVisits(int pieces) {
    std::vector<int> visits(static_cast<std::size_t>(pieces), 0);
    std::atomic<bool> inTeam = true;
    forEachPiece(pieces, [&](int piece, int thread) {
        ++visits[static_cast<std::size_t>(piece)];
        inTeam = inTeam && thread >= 0 && thread < omp_get_num_threads();
    });
    EXPECT_TRUE(inTeam);
    return visits;
}

std::vector<int> once(int pieces) {
    return std::vector<int>(static_cast<std::size_t>(pieces), 1);
}

TEST(TeamLoop, EveryPieceRunsOnceWithAnyNumberOfThreads) {
    test::forThreadCounts([] {
        for (const int pieces : {0, 1, 2, 3, 16, 67}) {
            std::vector<int> visits;
            runInTeam([&] { visits = countVisits(pieces); });
            EXPECT_EQ(visits, once(pieces));
        }
    });
}

TEST(TeamLoop, OpensARegionOutsideOfAnyRegion) {
    const test::ThreadCount two(2);
    std::atomic<int> runsInARegionOfTwo = 0;
    runInTeam([&] {
        forEachPiece(7, [&](int, int) {
            runsInARegionOfTwo += omp_in_parallel() != 0 && omp_get_num_threads() == 2 ? 1 : 0;
        });
    });
    EXPECT_EQ(runsInARegionOfTwo, 7);
}

TEST(TeamLoop, LoopsOutsideOfAnyRegionRunOnTheCaller) {
    EXPECT_EQ(countVisits(5), once(5));
    std::atomic<int> alone = 0;
    forEachPiece(
        5, [&](int, int thread) { alone += thread == 0 && omp_get_num_threads() == 1 ? 1 : 0; });
    EXPECT_EQ(alone, 5);
}

TEST(TeamLoop, UsesTheTeamOfTheCaller) {
    std::atomic<int> levels = 0;
#pragma omp parallel sections num_threads(2)
    {
#pragma omp section
        runInTeam([&] { levels += omp_get_level(); });
#pragma omp section
        runInTeam([&] { levels += omp_get_level(); });
    }
    EXPECT_EQ(levels, 2);
}

TEST(TeamLoop, LoopInASectionReturnsAfterAllItsPiecesHaveEnded) {
    int sums[2] = {};
    const auto sumOf = [](int pieces) {
        std::atomic<int> sum = 0;
        runInTeam([&] { forEachPiece(pieces, [&](int piece, int) { sum += piece; }); });
        return sum.load();
    };
#pragma omp parallel sections num_threads(2)
    {
#pragma omp section
        sums[0] = sumOf(50);
#pragma omp section
        sums[1] = sumOf(60);
    }
    EXPECT_EQ(50 * 49 / 2, sums[0]);
    EXPECT_EQ(60 * 59 / 2, sums[1]);
}

TEST(TeamLoop, LoopsOfPiecesNest) {
    test::forThreadCounts([] {
        std::atomic<int> runs = 0;
        runInTeam([&] {
            forEachPiece(3, [&](int, int) { forEachPiece(4, [&](int, int) { ++runs; }); });
        });
        EXPECT_EQ(runs, 12);
    });
}

TEST(TeamLoop, FailuresReachTheCaller) {
    const auto fail = [] { throw std::runtime_error("no memory for a tile"); };
    EXPECT_THROW(runInTeam(fail), std::runtime_error);
}

TEST(TeamLoop, FirstFailureOfAPieceReachesTheCallerAfterAllOthersHaveRun) {
    test::forThreadCounts([] {
        std::atomic<int> runs = 0;
        const auto loop = [&] {
            forEachPiece(10, [&](int piece, int) {
                ++runs;
                if (piece == 3) {
                    throw "a failure";
                }
            });
        };
        EXPECT_THROW(runInTeam(loop), const char*);
        EXPECT_EQ(10, runs);
        EXPECT_THROW(loop(), const char*);
        EXPECT_EQ(20, runs);
    });
}

TEST(TeamLoop, BandsCoverEveryRowOnce) {
    for (const int rows : {0, 1, 31, 32, 33, 100}) {
        std::vector<std::atomic<int>> runs(static_cast<std::size_t>(rows));
        runInTeam([&] {
            forEachRowBand(rows, 32, [&](int begin, int end) {
                EXPECT_LE(end - begin, 32);
                for (int y = begin; y < end; ++y) {
                    ++runs[static_cast<std::size_t>(y)];
                }
            });
        });
        for (const auto& run : runs) {
            EXPECT_EQ(1, run);
        }
    }
}

} // namespace
