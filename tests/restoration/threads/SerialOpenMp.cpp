#include "restoration/threads/SerialOpenMp.h"

#include "velimproclib/primitives/base/Team.h"

#include <gtest/gtest.h>
#include <thread>

namespace restoration {
namespace {

int threadsOfARegion() {
    int threads = 0;
    vel::openTeam([&]() noexcept {
#pragma omp single
        threads = omp_get_num_threads();
    });
    return threads;
}

TEST(SerialOpenMp, RegionsOfAWorkerHaveOneThreadWhileItLives) {
    std::thread([] {
        omp_set_num_threads(2);
        EXPECT_EQ(threadsOfARegion(), 2);
        {
            const SerialOpenMp serial;
            EXPECT_EQ(threadsOfARegion(), 1);
        }
        EXPECT_EQ(threadsOfARegion(), 2);
    }).join();
}

TEST(SerialOpenMp, OtherThreadsKeepTheirSetting) {
    const int before = omp_get_max_threads();
    omp_set_num_threads(3);
    std::thread([] {
        const SerialOpenMp serial;
        EXPECT_EQ(omp_get_max_threads(), 1);
        int seen = 0;
        std::thread([&] {
            omp_set_num_threads(2);
            seen = threadsOfARegion();
        }).join();
        EXPECT_EQ(seen, 2);
    }).join();
    EXPECT_EQ(omp_get_max_threads(), 3);
    omp_set_num_threads(before);
}

} // namespace
} // namespace restoration
