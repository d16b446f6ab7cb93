#include "velimproclib/veldeblurcv/deconvolution/ThreadScratch.h"

#include "tests/support/Threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace {

using namespace vel;

constexpr std::size_t kFloats = 17;

TEST(ThreadScratch, EachThreadHasItsOwnAlignedMemory) {
    const test::ThreadCount two(2);
    ThreadScratch scratch;
    scratch.allocate(kFloats);
    EXPECT_GE(scratch.of(1) - scratch.of(0), static_cast<std::ptrdiff_t>(kFloats));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.of(1)) % 64, 0u);
    float* const memory = scratch.of(0);
    scratch.fitTeam();
    EXPECT_EQ(scratch.of(0), memory) << "a team of the same size needs no allocation";
}

TEST(ThreadScratch, GrowsWithTheTeamButDoesNotShrink) {
    ThreadScratch scratch;
    {
        const test::ThreadCount one(1);
        scratch.allocate(kFloats);
    }
    float* grown = nullptr;
    {
        const test::ThreadCount four(4);
        scratch.fitTeam();
        grown = scratch.of(0);
        for (int thread = 0; thread < 4; ++thread) {
            std::fill_n(scratch.of(thread), kFloats, static_cast<float>(thread));
        }
        for (int thread = 0; thread < 4; ++thread) {
            EXPECT_EQ(std::count(scratch.of(thread), scratch.of(thread) + kFloats,
                                 static_cast<float>(thread)),
                      static_cast<std::ptrdiff_t>(kFloats));
        }
    }
    const test::ThreadCount one(1);
    scratch.fitTeam();
    EXPECT_EQ(scratch.of(0), grown);
}

TEST(ThreadScratch, FitsATeamThatIsLargerThanTheSettings) {
    const test::ThreadCount one(1);
    ThreadScratch scratch;
    scratch.allocate(kFloats);
#pragma omp parallel num_threads(3)
    {
#pragma omp single
        scratch.fitTeam();
        std::fill_n(scratch.of(omp_get_thread_num()), kFloats,
                    static_cast<float>(omp_get_thread_num()));
    }
    for (int thread = 0; thread < 3; ++thread) {
        EXPECT_EQ(scratch.of(thread)[kFloats - 1], static_cast<float>(thread));
    }
}

TEST(ThreadScratch, ASecondAllocationTakesTheNewSize) {
    const test::ThreadCount two(2);
    ThreadScratch scratch;
    scratch.allocate(kFloats);
    scratch.allocate(1000);
    EXPECT_GE(scratch.of(1) - scratch.of(0), 1000);
}

} // namespace
