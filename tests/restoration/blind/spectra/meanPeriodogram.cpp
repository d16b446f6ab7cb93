#include "restoration/blind/spectra/meanPeriodogram.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace restoration {
namespace {

constexpr double kDeviation = 0.1;

Plane whiteNoise(int width, int height) {
    std::minstd_rand random;
    Plane picture(width, height);
    for (float& value : picture.values()) {
        // Of a uniform distribution
        const double unit = static_cast<double>(random()) / std::minstd_rand::max() - 0.5;
        value = static_cast<float>(0.5 + kDeviation * std::sqrt(12.0) * unit);
    }
    return picture;
}

std::vector<double> periodogramOf(const Plane& picture) {
    const Cancellation cancellation;
    SquareTransform transform(windowSideOf(picture), cancellation);
    return meanPeriodogram(picture, transform);
}

TEST(MeanPeriodogram, WindowsFitThePictureAndHaveLimits) {
    EXPECT_EQ(windowSideOf(Plane(40, 300)), 32);
    EXPECT_EQ(windowSideOf(Plane(128, 128)), 128);
    EXPECT_EQ(windowSideOf(Plane(700, 600)), 256);
}

TEST(MeanPeriodogram, OfWhiteNoiseIsItsVariance) {
    const std::vector<double> power = periodogramOf(whiteNoise(300, 200));
    double sum = 0.0;
    for (const double value : power) {
        sum += value;
    }
    EXPECT_NEAR(sum / static_cast<double>(power.size()) / (kDeviation * kDeviation), 1.0, 0.05);
}

TEST(MeanPeriodogram, OfAConstantPictureIsNothing) {
    Plane picture(100, 90);
    std::ranges::fill(picture.values(), 0.7f);
    for (const double value : periodogramOf(picture)) {
        EXPECT_NEAR(value, 0.0, 1e-9);
    }
}

TEST(MeanPeriodogram, OfAWaveIsLargestAtItsFrequency) {
    constexpr int kRow = 5;
    constexpr int kColumn = 9;
    Plane picture(64, 64);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            picture.row(y)[x] = static_cast<float>(
                std::cos(2.0 * std::numbers::pi * (kRow * y + kColumn * x) / 64.0));
        }
    }
    const std::vector<double> power = periodogramOf(picture);
    const auto largest = std::distance(power.begin(), std::ranges::max_element(power));
    const Cancellation cancellation;
    SquareTransform transform(64, cancellation);
    vel::AlignedFloats marks;
    marks.resize(transform.fft().spectrumFloats());
    transform.forEachSlot(marks.data(), [&](std::size_t number, float* slot) {
        slot[0] = number == static_cast<std::size_t>(largest) ? 1.0f : 0.0f;
        slot[vel::RealFft2D::kLanes] = 0.0f;
    });
    EXPECT_EQ(transform.powerAt(kRow, kColumn, marks.data()), 1.0);
}

} // namespace
} // namespace restoration
