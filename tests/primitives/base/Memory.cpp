#include "velimproclib/primitives/base/Memory.h"

#include "tests/support/NullWhenOutOfMemory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <utility>
#include <vector>

namespace {

using namespace vel;

constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();

bool isAligned(const void* block) {
    return reinterpret_cast<std::uintptr_t>(block) % 32 == 0;
}

TEST(Memory, ImageAllocRoundsTheStepUpToThirtyTwoBytes) {
    std::int32_t step = -1;
    unsigned char* block = imageAlloc(100, 5, &step);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(step, 128);
    EXPECT_TRUE(isAligned(block));
    alignedFree(block);
}

TEST(Memory, BlocksHoldTheirWholeSizeWithoutTouchingEachOther) {
    std::vector<std::pair<float*, std::int32_t>> blocks;
    for (std::int32_t count = 1; count < 70; ++count) {
        blocks.emplace_back(alignedAllocF32(count), count);
        std::int32_t step = 0;
        unsigned char* rows = imageAlloc(4 * count, 3, &step);
        blocks.emplace_back(reinterpret_cast<float*>(rows), 3 * step / 4);
    }
    for (const auto& [block, count] : blocks) {
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(isAligned(block));
        std::fill_n(block, count, static_cast<float>(count));
    }
    for (const auto& [block, count] : blocks) {
        EXPECT_EQ(std::count(block, block + count, static_cast<float>(count)), count);
    }
    for (const auto& [block, count] : blocks) {
        alignedFree(block);
    }
}

TEST(Memory, ImageAllocKeepsAStepThatIsAMultipleOfThirtyTwo) {
    std::int32_t step = -1;
    unsigned char* block = imageAlloc(64, 1, &step);
    EXPECT_EQ(step, 64);
    alignedFree(block);
}

TEST(Memory, ImageAllocRefusesSizesBelowOneWithStepZero) {
    for (const auto& [rowBytes, height] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -7}}) {
        std::int32_t step = 99;
        EXPECT_EQ(imageAlloc(rowBytes, height, &step), nullptr);
        EXPECT_EQ(step, 0);
    }
}

TEST(Memory, StepStaysSetWhenTheHeapFails) {
    std::int32_t step = 0;
    EXPECT_EQ(imageAlloc(kHuge - 70, kHuge, &step), nullptr);
    EXPECT_EQ(step, kHuge - 63);
}

TEST(Memory, StepsBeyondThirtyTwoBitsAreRefused) {
    std::int32_t step = 99;
    EXPECT_EQ(imageAlloc(kHuge, 1, &step), nullptr);
    EXPECT_EQ(step, 0);
}

TEST(Memory, ImageAllocWithANullStepGivesNull) {
    EXPECT_EQ(imageAlloc(1, 1, nullptr), nullptr);
}

TEST(Memory, AlignedAllocRefusesCountsBelowOne) {
    EXPECT_EQ(alignedAllocF32(0), nullptr);
    EXPECT_EQ(alignedAllocF32(-4), nullptr);
}

TEST(Memory, TheWordBeforeABlockHoldsTheHeapPointerAtMostFortyBytesBefore) {
    float* block = alignedAllocF32(10);
    std::uintptr_t heapAddress;
    std::memcpy(&heapAddress, reinterpret_cast<unsigned char*>(block) - sizeof(void*),
                sizeof(void*));
    const auto distance = reinterpret_cast<std::uintptr_t>(block) - heapAddress;
    EXPECT_GE(distance, sizeof(void*));
    EXPECT_LE(distance, 32 + sizeof(void*));
    alignedFree(block);
}

TEST(Memory, FreeingANullBlockDoesNothing) {
    alignedFree(nullptr);
}

} // namespace
