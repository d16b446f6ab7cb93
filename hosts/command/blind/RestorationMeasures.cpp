#include "hosts/command/blind/RestorationMeasures.h"

#include "hosts/command/kernels/KernelTaps.h"
#include "hosts/command/pictures/Luminance.h"
#include "hosts/command/restoration/NoiseLevel.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velorn {
namespace {

/// The width of the band along the frame that is ignored, because restorations are unreliable
/// there.
constexpr int kBand = 16;

/// The mean of `measure` over the absolute differences between each pixel and its neighbours to the
/// right and below; 0 when there are none.
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

/// The mean squared difference between `blurred` and `restored` blurred again with `kernel`.
double meanSquaredDifference(const Luminance& blurred, const Luminance& restored,
                             const BlurKernel& kernel) {
    const std::vector<KernelTap> taps = tapsOf(kernel);
    const int band =
        std::min(kBand + kernel.largerSide() / 2, std::min(restored.width, restored.height) / 4);
    double squares = 0.0;
    double count = 0.0;
    for (int y = band; y < restored.height - band; ++y) {
        for (int x = band; x < restored.width - band; ++x) {
            float sum = 0.0f;
            for (const KernelTap& tap : taps) {
                sum += tap.weight * restored.at(std::clamp(x + tap.right, 0, restored.width - 1),
                                                std::clamp(y + tap.down, 0, restored.height - 1));
            }
            const double difference = static_cast<double>(sum - blurred.at(x, y));
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

double misfit(const RgbPixels& blurred, const RgbPixels& restored, const BlurKernel& kernel) {
    // The noise of rounding to whole levels.
    constexpr double kLeastNoise = 0.3;
    constexpr double kWeightOfSteps = 0.6;
    const Luminance picture = luminanceOf(blurred);
    const double noise = std::max(noiseLevel(blurred), kLeastNoise);
    const double steps = meanOverSteps(picture, [](double step) { return step * step; });
    // In a picture without contrast only the noise remains.
    const double own = std::max(steps, noise * noise);
    return meanSquaredDifference(picture, luminanceOf(restored), kernel) /
           (std::pow(own, kWeightOfSteps) * std::pow(noise * noise, 1.0 - kWeightOfSteps));
}

} // namespace velorn
