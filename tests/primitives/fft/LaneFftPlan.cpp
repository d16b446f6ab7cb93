#include "velimproclib/primitives/fft/LaneFftPlan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <vector>

namespace {

using vel::LaneFftPlan;
using vel::RootsOfUnity;

TEST(RootsOfUnity, MultiplesOfAQuarterTurnAreExact) {
    for (int order = 2; order <= 12; ++order) {
        const RootsOfUnity root(order);
        const std::size_t quarter = std::size_t{1} << (order - 2);
        EXPECT_EQ(root(0).re, 1.0);
        EXPECT_EQ(root(0).im, 0.0);
        EXPECT_EQ(root(quarter).re, 0.0);
        EXPECT_EQ(root(quarter).im, -1.0);
        EXPECT_EQ(root(2 * quarter).re, -1.0);
        EXPECT_EQ(root(2 * quarter).im, 0.0);
        EXPECT_EQ(root(3 * quarter).re, 0.0);
        EXPECT_EQ(root(3 * quarter).im, 1.0);
        EXPECT_EQ(root(4 * quarter).re, 1.0);
    }
}

TEST(RootsOfUnity, AgreeWithSineAndCosine) {
    for (int order = 0; order <= 12; ++order) {
        const RootsOfUnity root(order);
        const std::size_t count = std::size_t{1} << order;
        for (std::size_t k = 0; k < 2 * count; ++k) {
            const double angle = 2.0 * std::numbers::pi * static_cast<double>(k % count) /
                                 static_cast<double>(count);
            ASSERT_NEAR(root(k).re, std::cos(angle), 1e-15) << order << ", " << k;
            ASSERT_NEAR(root(k).im, -std::sin(angle), 1e-15) << order << ", " << k;
        }
    }
}

TEST(LaneFftPlan, RadicesMultiplyToTheLength) {
    for (int order = 0; order <= 12; ++order) {
        const LaneFftPlan plan(order);
        EXPECT_EQ(plan.length, std::size_t{1} << order);
        const auto product = std::accumulate(
            plan.radices.begin(), plan.radices.end(), std::size_t{1},
            [](std::size_t a, int radix) { return a * static_cast<std::size_t>(radix); });
        EXPECT_EQ(product, plan.length);
    }
}

TEST(LaneFftPlan, EveryPassButTheLastHasItsTwiddleFactors) {
    for (int order = 1; order <= 12; ++order) {
        const LaneFftPlan plan(order);
        ASSERT_EQ(plan.twiddles.size() + 1, plan.radices.size());
        std::size_t parts = plan.length;
        for (std::size_t pass = 0; pass < plan.twiddles.size(); ++pass) {
            const auto radix = static_cast<std::size_t>(plan.radices[pass]);
            parts /= radix;
            EXPECT_EQ(plan.twiddles[pass].size(), 2 * (parts - 1) * (radix - 1));
        }
    }
}

TEST(LaneFftPlan, PlacesAreAPermutationThatKeepsFrequencyZero) {
    for (int order = 0; order <= 12; ++order) {
        const LaneFftPlan plan(order);
        std::vector<std::uint32_t> sorted = plan.places;
        EXPECT_EQ(sorted.at(0), 0u);
        std::sort(sorted.begin(), sorted.end());
        ASSERT_EQ(sorted.size(), plan.length);
        for (std::size_t k = 0; k < sorted.size(); ++k) {
            ASSERT_EQ(sorted[k], k);
        }
    }
}

TEST(LaneFftPlan, DigitsOfTheFrequencyAreReversedInItsPlace) {
    const LaneFftPlan plan(9);
    ASSERT_EQ(plan.radices, (std::vector<int>{8, 8, 8}));
    EXPECT_EQ(plan.places[1], 64u);
    EXPECT_EQ(plan.places[8], 8u);
    EXPECT_EQ(plan.places[64], 1u);
    EXPECT_EQ(plan.places[1 + 8 * 2 + 64 * 3], 64u + 8u * 2 + 3u);
}

} // namespace
