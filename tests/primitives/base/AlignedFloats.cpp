#include "velimproclib/primitives/base/AlignedFloats.h"

#include "tests/support/NullWhenOutOfMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

namespace {

using namespace vel;

TEST(AlignedFloats, StartsEmpty) {
    const AlignedFloats floats;
    EXPECT_EQ(floats.size(), 0u);
    EXPECT_EQ(floats.data(), nullptr);
}

TEST(AlignedFloats, EverySizeIsAlignedAndHoldsItsFloats) {
    for (const std::size_t count : {1u, 2u, 3u, 15u, 16u, 17u, 67u, 100003u}) {
        AlignedFloats floats;
        floats.resize(count);
        ASSERT_EQ(floats.size(), count);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(floats.data()) % 64, 0u);
        AlignedFloats next;
        next.resize(count);
        std::fill_n(floats.data(), count, 0.5f);
        std::fill_n(next.data(), count, 0.25f);
        const float* const data = std::as_const(floats).data();
        EXPECT_EQ(std::count(data, data + count, 0.5f), static_cast<std::ptrdiff_t>(count));
    }
}

TEST(AlignedFloats, SameSizeKeepsTheBlockAndItsContent) {
    AlignedFloats floats;
    floats.resize(40);
    float* const block = floats.data();
    std::fill_n(block, 40, 2.0f);
    floats.resize(40);
    EXPECT_EQ(floats.data(), block);
    EXPECT_EQ(std::count(block, block + 40, 2.0f), 40);
}

TEST(AlignedFloats, SizeZeroFreesTheBlock) {
    AlignedFloats floats;
    floats.resize(40);
    floats.resize(0);
    EXPECT_EQ(floats.size(), 0u);
    EXPECT_EQ(floats.data(), nullptr);
}

TEST(AlignedFloats, BlockIsEmptyAfterExhaustedMemoryAndMayBeResizedAgain) {
    AlignedFloats floats;
    floats.resize(40);
    EXPECT_THROW(floats.resize(std::numeric_limits<std::size_t>::max() / 8), std::bad_alloc);
    EXPECT_EQ(floats.size(), 0u);
    EXPECT_EQ(floats.data(), nullptr);
    floats.resize(3);
    EXPECT_EQ(floats.size(), 3u);
}

} // namespace
