#include "restoration/noise/measureNoise.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace restoration {
namespace {

constexpr float kEightBits = 1.0f / 255.0f;
constexpr float kSixteenBits = 1.0f / 65535.0f;

/// A picture in memory, channel by channel.
struct Samples {
    int width = 0;
    int height = 0;
    int channels = 0;
    float step = 0.0f;
    std::vector<float> values;

    float& at(int x, int y, int channel) {
        return values[(static_cast<std::size_t>(channel) * static_cast<std::size_t>(height) +
                       static_cast<std::size_t>(y)) *
                          static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    NoiseLevels noise() {
        return measureNoise({width, height, channels, step, [this](int y, int c, float* target) {
                                 std::copy_n(&at(0, y, c), width, target);
                             }});
    }
};

float rounded(double value, float step) {
    return step > 0.0f ? static_cast<float>(std::round(value / double{step})) * step
                       : static_cast<float>(value);
}

/// A smooth gradient. Each channel has noise of its own, of `sigma` levels.
Samples gradient(int width, int height, int channels, double sigma, float step) {
    std::mt19937 random(7);
    std::normal_distribution<double> normal(0.0, 1.0);
    Samples samples{width, height, channels, step, {}};
    for (int c = 0; c < channels; ++c) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double level = 60.0 + 0.3 * x + 0.2 * y + sigma * normal(random);
                samples.values.push_back(rounded(level / 255.0, step));
            }
        }
    }
    return samples;
}

TEST(MeasureNoise, NoiseOfFineSamplesIsMeasured) {
    for (const float step : {0.0f, kSixteenBits}) {
        for (const double sigma : {0.05, 0.1, 0.3, 0.5, 1.0, 2.0, 4.0, 10.0}) {
            EXPECT_NEAR(gradient(200, 150, 1, sigma, step).noise().luminance, sigma,
                        0.03 * sigma + 0.003);
        }
    }
}

TEST(MeasureNoise, NoiseOfEightBitsIncludesTheirRounding) {
    for (const double sigma : {0.5, 1.0, 2.0, 4.0, 10.0}) {
        const double withRounding = std::hypot(sigma, 1.0 / std::sqrt(12.0));
        EXPECT_NEAR(gradient(200, 150, 1, sigma, kEightBits).noise().luminance, withRounding,
                    0.04 * withRounding);
    }
}

TEST(MeasureNoise, EightBitsStoredInFinerSamplesGiveTheSameResult) {
    for (const double sigma : {0.0, 0.1, 0.5, 1.0, 2.0, 4.0}) {
        Samples samples = gradient(200, 150, 1, sigma, kEightBits);
        const float expected = samples.noise().luminance;
        samples.step = 0.0f;
        EXPECT_NEAR(samples.noise().luminance, expected, 0.02f * expected);
    }
}

TEST(MeasureNoise, PlanesAreMeasuredByThemselves) {
    Samples samples = gradient(400, 300, 3, 2.0, 0.0f);
    const NoiseLevels levels = samples.noise();
    // Independent noise adds up by the squares of the weights.
    EXPECT_NEAR(levels.luminance, 2.0 * 0.66856, 0.05);
    EXPECT_NEAR(levels.chromaBlue, 2.0 * 0.62302, 0.05);
    EXPECT_NEAR(levels.chromaRed, 2.0 * 0.65721, 0.05);
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(levels.channels[c], 2.0, 0.08);
    }
    EXPECT_EQ(levels.channels[3], 0.0f);
}

TEST(MeasureNoise, LuminanceOfTwoAndFourChannelsIsTheirMean) {
    for (const int channels : {2, 4}) {
        const NoiseLevels levels = gradient(300, 300, channels, 3.0, 0.0f).noise();
        EXPECT_NEAR(levels.luminance, 3.0 / std::sqrt(channels), 0.1);
        EXPECT_EQ(levels.chromaBlue, 0.0f);
        for (std::size_t c = 0; c < 4; ++c) {
            EXPECT_NEAR(levels.channels[c], c < static_cast<std::size_t>(channels) ? 3.0 : 0.0,
                        0.15);
        }
    }
}

TEST(MeasureNoise, ClippedSquaresAreIgnored) {
    for (const float clipped : {0.0f, 1.0f}) {
        Samples samples = gradient(200, 200, 3, 2.0, kSixteenBits);
        std::fill_n(&samples.at(0, 0, 1), 200 * 150, clipped);
        for (const float noise : {samples.noise().channels[0], samples.noise().channels[1]}) {
            EXPECT_NEAR(noise, 2.0, 0.1);
        }
    }
}

TEST(MeasureNoise, SmoothGradientsHaveTheNoiseOfTheirRounding) {
    EXPECT_LT(gradient(200, 150, 3, 0.0, 0.0f).noise().luminance, 0.01f);
    EXPECT_LT(gradient(200, 150, 3, 0.0, kSixteenBits).noise().luminance, 0.01f);
    EXPECT_LT(gradient(200, 150, 3, 0.0, kEightBits).noise().luminance, 0.4f);
}

TEST(MeasureNoise, PicturesWithoutDifferencesHaveTheNoiseOfTheirRounding) {
    for (const int side : {1, 2, 300}) {
        for (const float value : {0.0f, 0.5f, 1.0f}) {
            Samples samples{side, side, 3, kEightBits, {}};
            samples.values.assign(static_cast<std::size_t>(3 * side * side), value);
            const NoiseLevels levels = samples.noise();
            EXPECT_NEAR(levels.luminance, 0.19299f, side == 300 ? 0.02f : 0.4f);
            EXPECT_GE(levels.luminance, 0.19299f);
            EXPECT_NEAR(levels.channels[1], 0.28868f, side == 300 ? 1e-4f : 0.4f);
        }
    }
}

TEST(MeasureNoise, ValuesThatAreNotFiniteDoNoHarm) {
    Samples samples = gradient(100, 100, 1, 1.0, 0.0f);
    for (int i = 0; i < 100; ++i) {
        samples.at(i, i, 0) = std::numeric_limits<float>::quiet_NaN();
        samples.at(99 - i, i, 0) = std::numeric_limits<float>::infinity();
    }
    EXPECT_NEAR(samples.noise().luminance, 1.0, 0.1);
}

TEST(MeasureNoise, LargePicturesAreMeasuredInAllTheirParts) {
    // The noise of the lower half is four times that of the upper half.
    Samples samples = gradient(2000, 4000, 1, 0.0, 0.0f);
    std::mt19937 random(5);
    std::normal_distribution<float> normal(0.0f, 1.0f / 255.0f);
    std::ranges::fill(samples.values, 0.5f);
    std::size_t row = 0;
    for (float& value : samples.values) {
        value += normal(random) * (row++ < samples.values.size() / 2 ? 1.0f : 4.0f);
    }
    const float noise = samples.noise().luminance;
    EXPECT_GT(noise, 1.4f);
    EXPECT_LT(noise, 2.5f);
}

/// Blocks of 8 by 8 pixels with the value of their mean and an error of their own, the first block
/// at (x, y).
void compress(Samples& samples, int left, int top, double sigma) {
    std::mt19937 random(11);
    std::normal_distribution<double> error(0.0, 1.0);
    for (int y = top - 8; y < samples.height; y += 8) {
        for (int x = left - 8; x < samples.width; x += 8) {
            const auto value = static_cast<float>(0.5 + (sigma / 255.0) * error(random));
            for (int i = std::max(y, 0); i < std::min(y + 8, samples.height); ++i) {
                for (int k = std::max(x, 0); k < std::min(x + 8, samples.width); ++k) {
                    samples.at(k, i, 0) = rounded(double{value}, kEightBits);
                }
            }
        }
    }
}

TEST(MeasureNoise, ErrorsOfCompressedBlocksAreMeasuredAtTheirCorners) {
    for (const int left : {0, 3, 7}) {
        for (const int top : {0, 5}) {
            Samples samples = gradient(400, 400, 1, 0.0, kEightBits);
            compress(samples, left, top, 3.0);
            EXPECT_NEAR(samples.noise().luminance, 3.0, 0.3) << left << " " << top;
            EXPECT_TRUE(samples.noise().isCompressed);
        }
    }
    EXPECT_FALSE(gradient(400, 400, 1, 3.0, kEightBits).noise().isCompressed);
}

} // namespace
} // namespace restoration
