#include "restoration/noise/medianDeviation.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace restoration {
namespace {

/// Counts of the absolute values of normal numbers with the deviation `sigma`.
std::vector<std::uint32_t> normalBins(double sigma, int numbers) {
    std::mt19937 random(3);
    std::normal_distribution<double> normal(0.0, 1.0);
    std::vector<std::uint32_t> bins(100);
    for (int i = 0; i < numbers; ++i) {
        ++bins[static_cast<std::size_t>(std::min(std::abs(sigma * normal(random)) + 0.5, 99.0))];
    }
    return bins;
}

TEST(MedianDeviation, BinsOfAnyWidthGiveTheDeviation) {
    for (const double sigma : {0.25, 0.4, 0.7, 1.0, 2.0, 10.0}) {
        EXPECT_NEAR(medianDeviation(normalBins(sigma, 100000), 100000), sigma, 0.02 * sigma);
    }
}

TEST(MedianDeviation, FewLargeValuesHaveLittleInfluence) {
    std::vector<std::uint32_t> bins = normalBins(3.0, 10000);
    bins[90] += 500;
    EXPECT_NEAR(medianDeviation(bins, 10500), 3.0, 0.3);
}

TEST(MedianDeviation, NoCountsGiveZero) {
    EXPECT_EQ(medianDeviation(std::vector<std::uint32_t>(10), 0), 0.0);
}

TEST(MedianDeviation, SingleCountGivesAValueOfItsBin) {
    const double median = 0.67449 * medianDeviation(std::vector<std::uint32_t>{0, 0, 1}, 1);
    EXPECT_GE(median, 1.5);
    EXPECT_LE(median, 2.5001);
}

TEST(MedianDeviation, ZerosGiveLessThanTheWidthOfTheFirstBin) {
    EXPECT_LT(medianDeviation(std::vector<std::uint32_t>{1000, 0}, 1000), 0.2);
}

} // namespace
} // namespace restoration
