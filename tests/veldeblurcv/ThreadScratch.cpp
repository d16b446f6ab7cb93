#include "velimproclib/veldeblurcv/ThreadScratch.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using namespace vel;

TEST(ThreadScratch, ThreadsHaveRoomsOfTheirOwn) {
    const int before = omp_get_max_threads();
    omp_set_num_threads(2);
    ThreadScratch scratch;
    scratch.allocate(17);
    EXPECT_GE(scratch.of(1) - scratch.of(0), 17);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.of(1)) % 64, 0u);
    float* const room = scratch.of(0);
    scratch.fitTeam();
    EXPECT_EQ(scratch.of(0), room) << "nothing is allocated while the team stays";
    omp_set_num_threads(before);
}

} // namespace
