#include "restoration/chroma/gradientRows.h"

#include "tests/support/EachTarget.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace restoration {
namespace {

constexpr float kCanary = 77.0f;

std::vector<float> randomRow(std::size_t count, float least, std::mt19937& random) {
    std::uniform_real_distribution<float> values(least, 1.0f);
    std::vector<float> row;
    for (std::size_t i = 0; i < count; ++i) {
        row.push_back(values(random));
    }
    return row;
}

/// A row with one more element, which must stay.
std::vector<float> target(std::size_t count) {
    return std::vector<float>(count + 1, kCanary);
}

TEST(GradientRows, AreCircularDifferencesTheirEnergyAndTheirMultiples) {
    std::mt19937 random(1);
    for (const std::size_t n : {2u, 3u, 15u, 64u, 67u}) {
        const std::vector<float> row = randomRow(n, -1.0f, random);
        const std::vector<float> below = randomRow(n, -1.0f, random);
        const std::vector<float> gain = randomRow(n, 0.0f, random);
        vel::test::forEachTarget([&] {
            std::vector<float> energy = target(n);
            std::vector<float> wx = target(n);
            std::vector<float> wy = target(n);
            gradientEnergy(row.data(), below.data(), energy.data(), n);
            scaledGradient(row.data(), below.data(), gain.data(), wx.data(), wy.data(), n);
            for (std::size_t i = 0; i < n; ++i) {
                const float gx = row[(i + 1) % n] - row[i];
                const float gy = below[i] - row[i];
                EXPECT_EQ(energy[i], gx * gx + gy * gy);
                EXPECT_EQ(wx[i], gain[i] * gx);
                EXPECT_EQ(wy[i], gain[i] * gy);
            }
            EXPECT_EQ(energy[n], kCanary);
            EXPECT_EQ(wx[n], kCanary);
            EXPECT_EQ(wy[n], kCanary);
        });
    }
}

TEST(GradientRows, GainComparesTheMeanOfNinePixelsWithTheNoise) {
    std::mt19937 random(2);
    for (const std::size_t n : {3u, 16u, 33u}) {
        const std::vector<float> rows[] = {randomRow(n, 0.0f, random), randomRow(n, 0.0f, random),
                                           randomRow(n, 0.0f, random)};
        vel::test::forEachTarget([&] {
            std::vector<float> gain = target(n);
            gradientGain(rows[0].data(), rows[1].data(), rows[2].data(), 0.3f, gain.data(), n);
            for (std::size_t i = 0; i < n; ++i) {
                double mean = 0;
                for (const std::vector<float>& row : rows) {
                    mean += static_cast<double>(row[(i + n - 1) % n] + row[i] + row[(i + 1) % n]);
                }
                mean /= 9;
                EXPECT_NEAR(static_cast<double>(gain[i]), mean / (mean + 0.3), 1e-6);
            }
            EXPECT_EQ(gain[n], kCanary);
        });
    }
}

TEST(GradientRows, GainIsZeroWithoutEnergyAndNoise) {
    const std::vector<float> zero(16, 0.0f);
    std::vector<float> gain(16, kCanary);
    gradientGain(zero.data(), zero.data(), zero.data(), 0.0f, gain.data(), 16);
    EXPECT_EQ(gain, zero);
}

TEST(GradientRows, GainOfInfiniteEnergyIsOne) {
    const std::vector<float> infinite(16, std::numeric_limits<float>::infinity());
    std::vector<float> gain(16, kCanary);
    gradientGain(infinite.data(), infinite.data(), infinite.data(), 0.1f, gain.data(), 16);
    EXPECT_EQ(gain, std::vector<float>(16, 1.0f));
}

TEST(GradientRows, GainIsTheSameOnEveryVariant) {
    std::mt19937 random(3);
    const std::vector<float> rows[] = {randomRow(67, 0.0f, random), randomRow(67, 0.0f, random),
                                       randomRow(67, 0.0f, random)};
    std::vector<float> expected;
    vel::test::forEachTarget([&] {
        std::vector<float> gain(67);
        gradientGain(rows[0].data(), rows[1].data(), rows[2].data(), 0.2f, gain.data(), 67);
        if (expected.empty()) {
            expected = gain;
        }
        EXPECT_EQ(gain, expected);
    });
}

} // namespace
} // namespace restoration
