#include "RestorationMeasure.h"

#include "Luminance.h"

#include <algorithm>
#include <cmath>

namespace velorn {
namespace {

/// Calls `take` with the strength of every step to the right and down.
template <class Take>
void forEachStep(const RgbPixels& pixels, Take&& take) {
    const Luminance picture = luminanceOf(pixels);
    const int band = std::min(16, std::min(picture.width, picture.height) / 8);
    for (int y = band; y + 1 < picture.height - band; ++y) {
        for (int x = band; x + 1 < picture.width - band; ++x) {
            const float level = picture.at(x, y);
            for (const float next : {picture.at(x + 1, y), picture.at(x, y + 1)}) {
                take(std::abs(static_cast<double>(next - level)));
            }
        }
    }
}

} // namespace

double unsharpness(const RgbPixels& pixels) {
    double sum = 0.0;
    double squares = 0.0;
    double steps = 0.0;
    forEachStep(pixels, [&](double step) {
        sum += step;
        squares += step * step;
        steps += 1.0;
    });
    return squares > 0.0 ? sum / std::sqrt(steps * squares) : 1.0;
}

double roughness(const RgbPixels& pixels) {
    double sum = 0.0;
    double steps = 0.0;
    forEachStep(pixels, [&](double step) {
        sum += std::sqrt(step);
        steps += 1.0;
    });
    return steps > 0.0 ? sum / steps : 0.0;
}

} // namespace velorn
