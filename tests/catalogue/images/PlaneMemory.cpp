#include "velimproclib/catalogue/images/PlaneMemory.h"

#include "tests/support/NullWhenOutOfMemory.h"
#include "velimproclib/primitives/base/Memory.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <utility>

namespace {

using namespace vel;

constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();

struct Free {
    void operator()(float* block) const { alignedFree(block); }
};
using Block = std::unique_ptr<float, Free>;

TEST(PlaneMemory, RowsHoldTheirFloatsRoundedUpToThirtyTwoBytes) {
    std::int32_t step = 0;
    const Block plane(imageAllocF32(9, 3, &step));
    EXPECT_NE(plane, nullptr);
    EXPECT_EQ(step, 64);
    const Block spectrum(imageAllocC32(9, 3, &step));
    EXPECT_NE(spectrum, nullptr);
    EXPECT_EQ(step, 96);
}

TEST(PlaneMemory, SizesBelowOneAndRowsBeyondThirtyTwoBitsAreRefusedWithStepZero) {
    for (const auto& [width, height] :
         {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -7}, {kHuge / 2, 1}, {kHuge, 1}}) {
        for (const auto allocate : {imageAllocF32, imageAllocC32}) {
            std::int32_t step = 99;
            EXPECT_EQ(allocate(width, height, &step), nullptr);
            EXPECT_EQ(step, 0) << width << " by " << height;
        }
    }
}

} // namespace
