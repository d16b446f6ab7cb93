#include "velimproclib/catalogue/tiles/MemoryBudget.h"

#include <gtest/gtest.h>

namespace {

using vel::MemoryFigures;

TEST(MemoryBudget, PhysicalMemoryIsCappedAndVirtualMemoryIsNot) {
    const vel::MemoryBudget budget = vel::memoryBudget(MemoryFigures{16e9, 9e9, 20e9, 1e14});
    EXPECT_EQ(budget.physical, 2.5e9);
    EXPECT_EQ(budget.virtualMemory, 1e14);
    EXPECT_EQ(vel::memoryBudget(MemoryFigures{16e9, 1e9, 20e9, 1e14}).physical, 1e9);
}

TEST(MemoryBudget, PixelsFollowTheSmallestFigure) {
    EXPECT_EQ(vel::pixelBudget(MemoryFigures{1300e3, 1, 1e12, 1e12}), 1000);
    EXPECT_EQ(vel::pixelBudget(MemoryFigures{1e12, 1, 1300e3 + 1299, 1e12}), 1000);
    EXPECT_EQ(vel::pixelBudget(MemoryFigures{1e12, 1, 1e12, 1300e3 - 1}), 999);
}

TEST(MemoryBudget, PixelsAreCapped) {
    EXPECT_EQ(vel::pixelBudget(MemoryFigures{1e12, 1e12, 1e12, 1e12}), 3500000);
}

TEST(MemoryBudget, FailedQueryGivesNothing) {
    const vel::MemoryBudget budget = vel::memoryBudget(MemoryFigures{});
    EXPECT_EQ(budget.physical, 0);
    EXPECT_EQ(budget.virtualMemory, 0);
    EXPECT_EQ(vel::pixelBudget(MemoryFigures{}), 0);
}

TEST(MemoryBudget, ThisMachineHasMemory) {
    const MemoryFigures figures = vel::queryMemory();
    EXPECT_GT(figures.availablePhysical, 0);
    EXPECT_GE(figures.totalPhysical, figures.availablePhysical);
    EXPECT_GE(figures.availablePageFile, figures.availablePhysical);
    EXPECT_GT(figures.availableVirtual, 0);
    EXPECT_GT(vel::memoryBudget().physical, 0);
    EXPECT_LE(vel::memoryBudget().physical, 2.5e9);
    EXPECT_GT(vel::pixelBudget(), 0);
    EXPECT_LE(vel::pixelBudget(), 3500000);
}

} // namespace
