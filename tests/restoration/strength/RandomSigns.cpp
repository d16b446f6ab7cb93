#include "restoration/strength/RandomSigns.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(RandomSigns, AreTheBitsOfSplitMix64FromTheLowest) {
    // The first outputs for the seed 0, as published with the generator.
    constexpr std::uint64_t kOutputs[] = {0xe220a8397b1dcdafU, 0x6e789e6aa1b965f4U};
    RandomSigns signs(0);
    for (const std::uint64_t output : kOutputs) {
        for (int bit = 0; bit < 64; ++bit) {
            EXPECT_EQ(signs.next(), (output >> bit & 1U) != 0 ? 1.0f : -1.0f) << bit;
        }
    }
}

TEST(RandomSigns, OfDifferentSeedsAreIndependent) {
    constexpr int kCount = 100000;
    RandomSigns first(1);
    RandomSigns second(2);
    double product = 0.0;
    for (int i = 0; i < kCount; ++i) {
        product += static_cast<double>(first.next()) * static_cast<double>(second.next());
    }
    EXPECT_LT(std::abs(product / kCount), 0.015); // five standard deviations
}

} // namespace
} // namespace restoration
