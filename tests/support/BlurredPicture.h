#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace vel::test {

/// An 8-bit colour picture with edges in all directions, fine bars and soft slopes.
inline velorn::RgbPixels drawnPicture(int width, int height) {
    std::vector<std::uint8_t> samples;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double ring = std::sin(std::hypot(x - width / 3.0, y - height / 2.0) / 6.0);
            const bool isBar = (x / 7 + y / 31) % 2 == 0;
            const double level = 90.0 + (ring > 0.0 ? 60.0 : 0.0) + (isBar ? 30.0 : 0.0) + 0.1 * y;
            samples.push_back(static_cast<std::uint8_t>(level));
            samples.push_back(static_cast<std::uint8_t>(level * 0.9));
            samples.push_back(static_cast<std::uint8_t>(level * 0.7 + 20.0));
        }
    }
    return {width, height, samples};
}

/// `picture` (8 bits) with its contrast reduced to a share of the original.
inline velorn::RgbPixels faded(velorn::RgbPixels picture, double share) {
    constexpr double kGrey = 110.0;
    for (std::uint8_t& sample : std::get<std::vector<std::uint8_t>>(picture.samples)) {
        sample = static_cast<std::uint8_t>(std::lround(kGrey + share * (sample - kGrey)));
    }
    return picture;
}

/// `picture` (8 bits) with independent, uniformly distributed noise of up to `most` levels up and
/// down in every sample. Equal arguments give equal noise.
inline velorn::RgbPixels noisy(velorn::RgbPixels picture, int most) {
    std::minstd_rand random;
    const auto span = static_cast<std::minstd_rand::result_type>(2 * most + 1);
    for (std::uint8_t& sample : std::get<std::vector<std::uint8_t>>(picture.samples)) {
        const int level = sample + static_cast<int>(random() % span) - most;
        sample = static_cast<std::uint8_t>(std::clamp(level, 0, 255));
    }
    return picture;
}

/// `sharp` (8 bits) blurred by plain summation, with replicated border pixels.
inline velorn::RgbPixels blurred(const velorn::RgbPixels& sharp, const velorn::BlurKernel& kernel) {
    const auto& samples = std::get<std::vector<std::uint8_t>>(sharp.samples);
    const auto at = [&](int x, int y, int c) {
        const int column = std::clamp(x, 0, sharp.width - 1);
        const int row = std::clamp(y, 0, sharp.height - 1);
        return samples[static_cast<std::size_t>((row * sharp.width + column) * 3 + c)];
    };
    std::vector<std::uint8_t> result;
    for (int y = 0; y < sharp.height; ++y) {
        for (int x = 0; x < sharp.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (int r = 0; r < kernel.height; ++r) {
                    for (int k = 0; k < kernel.width; ++k) {
                        sum +=
                            kernel.at(r, k) * static_cast<float>(at(x + kernel.width / 2 - k,
                                                                    y + kernel.height / 2 - r, c));
                    }
                }
                result.push_back(static_cast<std::uint8_t>(std::lround(sum)));
            }
        }
    }
    return {sharp.width, sharp.height, result};
}

/// Peak signal-to-noise ratio in decibels, for samples with the given white level.
template <class T>
double decibels(const std::vector<T>& first, const std::vector<T>& second, double white) {
    double squares = 0.0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        const double difference = static_cast<double>(first[i]) - static_cast<double>(second[i]);
        squares += difference * difference;
    }
    return 10.0 * std::log10(white * white * static_cast<double>(first.size()) / squares);
}

} // namespace vel::test
