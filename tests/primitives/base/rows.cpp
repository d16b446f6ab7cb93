#include "velimproclib/primitives/base/rows.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace vel;

TEST(Rows, RowIsStepBytesAfterTheRowBefore) {
    unsigned char plane[32] = {};
    EXPECT_EQ(rowAt(&plane[0], 7, 0), &plane[0]);
    EXPECT_EQ(rowAt(&plane[0], 7, 3), &plane[21]);
}

TEST(Rows, BytesAwayGoesBothWays) {
    const float plane[6] = {};
    EXPECT_EQ(unaligned(&plane[5]), bytesAway(unaligned(&plane[2]), 12));
    EXPECT_EQ(unaligned(&plane[0]), bytesAway(unaligned(&plane[2]), -8));
}

TEST(Rows, OffsetsBeyondTwoGigabytesDoNotWrap) {
    if constexpr (sizeof(void*) == 8) {
        const auto row = reinterpret_cast<std::uintptr_t>(
            rowAt(static_cast<char*>(nullptr), std::numeric_limits<std::int32_t>::max(), 3));
        EXPECT_EQ(static_cast<std::uint64_t>(row), 3ULL * 2147483647ULL);
    }
}

TEST(Rows, UnalignedElementIsAsLargeAsItsValue) {
    static_assert(sizeof(Unaligned<float>) == 4 && alignof(Unaligned<float>) == 1);
    alignas(float) unsigned char bytes[9] = {};
    auto* odd = reinterpret_cast<Unaligned<float>*>(bytes + 1);
    odd[1].value = 2.5f;
    EXPECT_EQ(odd[1].value, 2.5f);
    EXPECT_EQ(bytes[0], 0);
}

TEST(Rows, JoinsRowsOnlyWhenEveryImageIsAdjacent) {
    const Extent joined = joinAdjacentRows(10, 4, {{10, 1}, {40, 4}});
    EXPECT_EQ(joined.columns, 40u);
    EXPECT_EQ(joined.rows, 1u);
    const Extent apart = joinAdjacentRows(10, 4, {{10, 1}, {44, 4}});
    EXPECT_EQ(apart.columns, 10u);
    EXPECT_EQ(apart.rows, 4u);
}

} // namespace
