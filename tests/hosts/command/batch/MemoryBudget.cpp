#include "hosts/command/batch/MemoryBudget.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using velorn::MemoryBudget;

// A budget that makes a thread wait for ever is noticed by the time limit of the tests.

TEST(MemoryBudget, SharesThatFitAreTakenAtOnce) {
    MemoryBudget budget(100);
    const auto first = budget.take(60);
    const auto second = budget.take(40);
}

TEST(MemoryBudget, ReturnedMemoryIsTakenAgain) {
    MemoryBudget budget(100);
    for (int i = 0; i < 3; ++i) {
        const auto share = budget.take(100);
    }
    MemoryBudget::Share kept = budget.take(70);
    kept = MemoryBudget::Share();
    const auto all = budget.take(100);
}

TEST(MemoryBudget, MoreThanThereIsMeansAllOfIt) {
    MemoryBudget budget(100);
    { const auto share = budget.take(1000); }
    const auto share = budget.take(100);
}

TEST(MemoryBudget, SharesInUseNeverExceedTheBudget) {
    constexpr int kBudget = 100;
    MemoryBudget budget(kBudget);
    std::atomic<int> used = 0;
    std::atomic<bool> hasExceeded = false;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 500; ++i) {
                const int bytes = 20 + (17 * i + 31 * t) % 90;
                const int taken = std::min(bytes, kBudget);
                const auto share = budget.take(static_cast<std::uint64_t>(bytes));
                if ((used += taken) > kBudget) {
                    hasExceeded = true;
                }
                std::this_thread::yield();
                used -= taken;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(hasExceeded);
}

} // namespace
