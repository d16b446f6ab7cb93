#include "hosts/command/pixels/linearLight.h"

#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velorn {
namespace {

/// Quotients of rounded 16-bit floats may exceed 1 by their precision.
constexpr float kRoundingOfHalves = 1.0f + 1.0f / 1024.0f;

float codedOf(float light) {
    return light <= 0.0031308f ? 12.92f * light : 1.055f * std::pow(light, 1.0f / 2.4f) - 0.055f;
}

float lightOf(double coded) {
    return static_cast<float>(coded <= 0.04045 ? coded / 12.92
                                               : std::pow((coded + 0.055) / 1.055, 2.4));
}

std::vector<float> lightOfEveryWord() {
    std::vector<float> table(65536);
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = lightOf(static_cast<double>(i) / 65535.0);
    }
    return table;
}

std::uint16_t rounded(float sample) {
    if (!(sample >= 0.0f && sample <= 1.0f)) {
        throw Failure("has floating-point samples outside 0..1; scale it to that range first");
    }
    return static_cast<std::uint16_t>(sample * 65535.0f + 0.5f);
}

float dividedBy(float alpha, float colour) {
    if (!(alpha > 0.0f)) {
        return colour;
    }
    const float quotient = colour / alpha;
    return quotient > 1.0f && quotient <= kRoundingOfHalves ? 1.0f : quotient;
}

} // namespace

Pixels fromLinearLight(std::span<const float> samples, const PictureShape& shape) {
    Pixels pixels{shape.width, shape.height, shape.channels, {}};
    auto& words = pixels.samples.emplace<std::vector<std::uint16_t>>(samples.size());
    const auto step = static_cast<std::size_t>(shape.channels);
    const std::size_t colours = step < 3 ? 1 : 3;
    for (std::size_t first = 0; first < samples.size(); first += step) {
        const float alpha = shape.hasAlpha() ? samples[first + colours] : 1.0f;
        for (std::size_t c = 0; c < colours; ++c) {
            const float light = dividedBy(alpha, samples[first + c]);
            rounded(light); // refuses what the curve below would hide
            words[first + c] = rounded(std::min(codedOf(light), 1.0f));
        }
        if (shape.hasAlpha()) {
            words[first + colours] = rounded(alpha);
        }
    }
    return pixels;
}

std::vector<float> toLinearLight(const Pixels& pixels) {
    const std::vector<float> light = lightOfEveryWord();
    const auto step = static_cast<std::size_t>(pixels.channels);
    const std::size_t colours = step < 3 ? 1 : 3;
    return std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            constexpr std::size_t toWord = sizeof(T) == 1 ? 257 : 1;
            std::vector<float> result(samples.size());
            for (std::size_t first = 0; first < samples.size(); first += step) {
                float alpha = 1.0f;
                if (pixels.shape().hasAlpha()) {
                    alpha = static_cast<float>(samples[first + colours]) /
                            static_cast<float>(std::numeric_limits<T>::max());
                    result[first + colours] = alpha;
                }
                for (std::size_t c = 0; c < colours; ++c) {
                    result[first + c] = alpha * light[toWord * samples[first + c]];
                }
            }
            return result;
        },
        pixels.samples);
}

std::vector<std::uint16_t> toSixteenBits(std::span<const float> samples) {
    std::vector<std::uint16_t> words(samples.size());
    std::ranges::transform(samples, words.begin(), rounded);
    return words;
}

void unassociateAlpha(Pixels& pixels) {
    const auto step = static_cast<std::size_t>(pixels.channels);
    std::visit(
        [&]<class T>(std::vector<T>& samples) {
            constexpr std::uint64_t white = std::numeric_limits<T>::max();
            for (std::size_t first = 0; first < samples.size(); first += step) {
                const std::uint64_t alpha = samples[first + step - 1];
                if (alpha == 0) {
                    continue;
                }
                for (std::size_t c = 0; c + 1 < step; ++c) {
                    const std::uint64_t colour = samples[first + c];
                    samples[first + c] =
                        static_cast<T>(std::min(white, (colour * white + alpha / 2) / alpha));
                }
            }
        },
        pixels.samples);
}

} // namespace velorn
