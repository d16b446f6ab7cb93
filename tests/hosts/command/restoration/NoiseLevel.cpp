#include "hosts/command/restoration/NoiseLevel.h"

#include "hosts/command/pictures/PixelScale.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

using velorn::noiseLevel;
using velorn::RgbPixels;

constexpr int kSide = 200;

/// A smooth grey gradient with noise of `sigma` levels of 255, equal in all channels.
template <class T>
RgbPixels greyWithNoise(double sigma, double white) {
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 1.0);
    std::vector<T> samples;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const double level = (60.0 + 0.3 * x + 0.2 * y + sigma * noise(random)) * white / 255.0;
            samples.insert(samples.end(), 3,
                           static_cast<T>(std::lround(std::clamp(level, 0.0, white))));
        }
    }
    return {kSide, kSide, samples};
}

TEST(NoiseLevel, NoiseOfSixteenBitPicturesIsMeasured) {
    for (const double sigma : {0.1, 0.5, 1.0, 2.0, 4.0, 10.0}) {
        EXPECT_NEAR(noiseLevel(greyWithNoise<std::uint16_t>(sigma, velorn::kFifteenBitWhite)),
                    sigma, 0.05 * sigma + 0.01);
    }
}

TEST(NoiseLevel, NoiseOfEightBitPicturesIncludesTheirRounding) {
    for (const double sigma : {0.5, 1.0, 2.0, 4.0, 10.0}) {
        const double withRounding = std::hypot(sigma, std::sqrt(1.0 / 12.0));
        EXPECT_NEAR(noiseLevel(greyWithNoise<std::uint8_t>(sigma, 255.0)), withRounding,
                    0.08 * withRounding);
    }
}

TEST(NoiseLevel, SmoothGradientsHaveLittleNoise) {
    EXPECT_LT(noiseLevel(greyWithNoise<std::uint16_t>(0.0, velorn::kFifteenBitWhite)), 0.05);
    EXPECT_LT(noiseLevel(greyWithNoise<std::uint8_t>(0.0, 255.0)), 0.4);
}

TEST(NoiseLevel, ClippedAreasAreIgnored) {
    RgbPixels pixels = greyWithNoise<std::uint16_t>(2.0, velorn::kFifteenBitWhite);
    auto& samples = std::get<std::vector<std::uint16_t>>(pixels.samples);
    std::fill(samples.begin(),
              samples.begin() + static_cast<std::ptrdiff_t>(samples.size() * 3 / 4),
              velorn::kFifteenBitWhite);
    EXPECT_NEAR(noiseLevel(pixels), 2.0, 0.2);
}

TEST(NoiseLevel, FewEdgesHaveLittleInfluence) {
    RgbPixels pixels = greyWithNoise<std::uint16_t>(1.0, velorn::kFifteenBitWhite);
    auto& samples = std::get<std::vector<std::uint16_t>>(pixels.samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t pixel = i / 3;
        if ((pixel % kSide / 20 + pixel / kSide / 20) % 2 == 0) {
            samples[i] = static_cast<std::uint16_t>(samples[i] / 2 + 100);
        }
    }
    EXPECT_LT(noiseLevel(pixels), 1.0);
    EXPECT_GT(noiseLevel(pixels), 0.5);
}

TEST(NoiseLevel, PicturesWithoutMeasurableSquaresHaveNoNoise) {
    EXPECT_EQ(noiseLevel({1, 1, std::vector<std::uint8_t>(3, 100)}), 0.0);
    EXPECT_EQ(noiseLevel({4, 4, std::vector<std::uint8_t>(48, 255)}), 0.0);
    EXPECT_EQ(noiseLevel({0, 0, std::vector<std::uint16_t>()}), 0.0);
}

} // namespace
