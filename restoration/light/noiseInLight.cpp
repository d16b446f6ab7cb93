#include "restoration/light/noiseInLight.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace restoration {
namespace {

constexpr int kRows = 64;
constexpr float kMargin = 1.2f;

using Weights = std::array<float, 3>;
constexpr Weights kLuminance{0.299f, 0.587f, 0.114f};
constexpr Weights kChromaBlue{-0.168736f, -0.331264f, 0.5f};
constexpr Weights kChromaRed{0.5f, -0.418688f, -0.081312f};

/// The mean of the squared slope of a channel's curve over the picture.
float meanSquaredSlope(const PictureReader& picture, int channel, const ToneCurve& curve) {
    std::vector<float> row(static_cast<std::size_t>(picture.width()));
    const int rows = std::min(picture.height(), kRows);
    double sum = 0.0;
    for (int i = 0; i < rows; ++i) {
        const auto y = static_cast<int>((2 * std::int64_t{i} + 1) * picture.height() / (2 * rows));
        picture.readChannel(channel, y, 0, picture.width(), row.data());
        for (const float value : row) {
            const auto slope = static_cast<double>(curve.slope(value));
            sum += slope * slope;
        }
    }
    return static_cast<float>(sum / (static_cast<double>(rows) * picture.width()));
}

/// How much the noise of a sum of channels grows, with the margin.
float growth(const Weights& weights, const std::array<float, 4>& squares) {
    float before = 0.0f;
    float after = 0.0f;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        before += weights[i] * weights[i];
        after += weights[i] * weights[i] * squares[i];
    }
    return kMargin * std::sqrt(after / before);
}

} // namespace

NoiseLevels noiseInLight(const PictureReader& picture, const ToneCurves& curves,
                         const NoiseLevels& stored) {
    const auto channels = static_cast<std::size_t>(picture.colours());
    std::array<float, 4> squares{};
    NoiseLevels light = stored;
    float mean = 0.0f;
    for (std::size_t i = 0; i < channels; ++i) {
        squares[i] = meanSquaredSlope(picture, static_cast<int>(i), curves.of(i));
        light.channels[i] = kMargin * stored.channels[i] * std::sqrt(squares[i]);
        mean += squares[i] / static_cast<float>(channels);
    }
    if (channels == 3) {
        light.luminance = stored.luminance * growth(kLuminance, squares);
        light.chromaBlue = stored.chromaBlue * growth(kChromaBlue, squares);
        light.chromaRed = stored.chromaRed * growth(kChromaRed, squares);
    } else {
        light.luminance = kMargin * stored.luminance * std::sqrt(mean);
    }
    return light;
}

} // namespace restoration
