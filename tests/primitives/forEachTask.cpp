#include "velimproclib/primitives/forEachTask.h"

#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <omp.h>
#include <vector>

namespace {

using namespace vel;

TEST(ForEachTask, EveryTaskRunsOnceWithAnyNumberOfThreads) {
    for (const int threads : {1, 2, 4}) {
        std::vector<std::atomic<int>> runs(100);
#pragma omp parallel num_threads(threads)
#pragma omp single
        forEachTask(100, [&](int i) { ++runs[static_cast<std::size_t>(i)]; });
        for (const auto& run : runs) {
            EXPECT_EQ(1, run);
        }
    }
}

TEST(ForEachTask, OutsideARegionItOpensOne) {
    const int threadsBefore = omp_get_max_threads();
    omp_set_num_threads(2);
    std::atomic<int> runs{0};
    std::atomic<int> runsInARegionOfTwo{0};
    forEachTask(7, [&](int) {
        ++runs;
        runsInARegionOfTwo += omp_in_parallel() != 0 && omp_get_num_threads() == 2 ? 1 : 0;
    });
    omp_set_num_threads(threadsBefore);
    EXPECT_EQ(7, runs);
    EXPECT_EQ(7, runsInARegionOfTwo);
    forEachTask(0, [&](int) { ++runs; });
    EXPECT_EQ(7, runs);
}

TEST(ForEachTask, ReturnsFromASectionOnlyWhenAllItsTasksHaveEnded) {
    int sums[2] = {};
#pragma omp parallel sections num_threads(2)
    {
#pragma omp section
        {
            std::atomic<int> sum{0};
            forEachTask(50, [&](int i) { sum += i; });
            sums[0] = sum;
        }
#pragma omp section
        {
            std::atomic<int> sum{0};
            forEachTask(60, [&](int i) { sum += i; });
            sums[1] = sum;
        }
    }
    EXPECT_EQ(50 * 49 / 2, sums[0]);
    EXPECT_EQ(60 * 59 / 2, sums[1]);
}

TEST(ForEachTask, TheFirstFailureReachesTheCallerAndTheOthersStillRun) {
    std::atomic<int> runs{0};
    const auto run = [&] {
        forEachTask(10, [&](int i) {
            ++runs;
            if (i == 3) {
                throw "a failure";
            }
        });
    };
    EXPECT_THROW(run(), const char*);
    EXPECT_EQ(10, runs);
}

TEST(ForEachTask, BandsCoverEveryRowOnce) {
    for (const int rows : {0, 1, 31, 32, 33, 100}) {
        std::vector<std::atomic<int>> runs(static_cast<std::size_t>(rows));
        forEachRowBand(rows, 32, [&](int begin, int end) {
            for (int y = begin; y < end; ++y) {
                ++runs[static_cast<std::size_t>(y)];
            }
        });
        for (const auto& run : runs) {
            EXPECT_EQ(1, run);
        }
    }
}

} // namespace
