#include "velimproclib/tiles/forRowChunks.h"

#include "tests/support/Threads.h"

#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace vel;

TEST(ForRowChunks, ChunksCoverEveryRowOnce) {
    test::forThreadCounts([] {
        for (const int columns : {1, 2000}) {
            for (const int rows : {0, 1, 15, 16, 17, 100}) {
                std::vector<std::atomic<int>> runs(static_cast<std::size_t>(rows));
                forRowChunks(columns, rows, [&](cv::Range chunk) {
                    for (int y = chunk.start; y < chunk.end; ++y) {
                        ++runs[static_cast<std::size_t>(y)];
                    }
                });
                for (const auto& run : runs) {
                    EXPECT_EQ(1, run);
                }
            }
        }
    });
}

TEST(ForRowChunks, OnlyLargeAreasOpenARegion) {
    const test::ThreadCount two(2);
    const auto threadsFor = [](int columns, int rows) {
        std::atomic<int> threads = 0;
        forRowChunks(columns, rows, [&](cv::Range) { threads = omp_get_num_threads(); });
        return threads.load();
    };
    EXPECT_EQ(threadsFor(127, 128), 1);
    EXPECT_EQ(threadsFor(128, 128), 2);
}

TEST(ForRowChunks, FailuresReachTheCaller) {
    for (const int columns : {1, 2000}) {
        EXPECT_THROW(forRowChunks(columns, 100, [](cv::Range) { throw "a failure"; }), const char*);
    }
}

} // namespace
