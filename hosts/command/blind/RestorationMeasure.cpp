#include "hosts/command/blind/RestorationMeasure.h"

#include "hosts/command/pictures/Luminance.h"
#include "hosts/command/restoration/NoiseLevel.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velorn {
namespace {

/// What is left out along the frame, where a restoration has to guess.
constexpr int kBand = 16;

/// The mean of `measure` over the steps to the right and down; 0 when there is none.
template <class Measure>
double meanOverSteps(const Luminance& picture, Measure&& measure) {
    const int band = std::min(kBand, std::min(picture.width, picture.height) / 8);
    double sum = 0.0;
    double steps = 0.0;
    for (int y = band; y + 1 < picture.height - band; ++y) {
        for (int x = band; x + 1 < picture.width - band; ++x) {
            const float level = picture.at(x, y);
            for (const float next : {picture.at(x + 1, y), picture.at(x, y + 1)}) {
                sum += measure(std::abs(static_cast<double>(next - level)));
                steps += 1.0;
            }
        }
    }
    return steps > 0.0 ? sum / steps : 0.0;
}

/// One weight of a kernel, and where the light comes from that it brings.
struct Tap {
    int right;
    int down;
    float weight;
};

std::vector<Tap> tapsOf(const BlurKernel& kernel) {
    std::vector<Tap> taps;
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            if (kernel.at(r, c) != 0.0f) {
                taps.push_back({kernel.width / 2 - c, kernel.height / 2 - r, kernel.at(r, c)});
            }
        }
    }
    return taps;
}

double meanSquaredDifference(const Luminance& taken, const Luminance& restored,
                             const BlurKernel& kernel) {
    const std::vector<Tap> taps = tapsOf(kernel);
    const int band =
        std::min(kBand + kernel.largerSide() / 2, std::min(restored.width, restored.height) / 4);
    double squares = 0.0;
    double count = 0.0;
    for (int y = band; y < restored.height - band; ++y) {
        for (int x = band; x < restored.width - band; ++x) {
            float sum = 0.0f;
            for (const Tap& tap : taps) {
                sum += tap.weight * restored.at(std::clamp(x + tap.right, 0, restored.width - 1),
                                                std::clamp(y + tap.down, 0, restored.height - 1));
            }
            const double difference = static_cast<double>(sum - taken.at(x, y));
            squares += difference * difference;
            count += 1.0;
        }
    }
    return squares / count;
}

} // namespace

double roughness(const RgbPixels& pixels) {
    return meanOverSteps(luminanceOf(pixels), [](double step) { return std::sqrt(step); });
}

double doubtfulness(const RgbPixels& taken, const RgbPixels& restored, const BlurKernel& kernel) {
    // Rounding to whole levels alone makes about so much noise.
    constexpr double kLeastNoise = 0.3;
    constexpr double kWeightOfSteps = 0.6;
    const Luminance picture = luminanceOf(taken);
    const double noise = std::max(noiseLevel(taken), kLeastNoise);
    const double steps = meanOverSteps(picture, [](double step) { return step * step; });
    // A picture without steps is as good as its noise.
    const double own = std::max(steps, noise * noise);
    return meanSquaredDifference(picture, luminanceOf(restored), kernel) /
           (std::pow(own, kWeightOfSteps) * std::pow(noise * noise, 1.0 - kWeightOfSteps));
}

} // namespace velorn
