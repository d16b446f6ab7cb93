#include "RestorationMeasure.h"

#include "Luminance.h"

#include <algorithm>
#include <cmath>

namespace velorn {

double unsharpness(const RgbPixels& pixels) {
    const Luminance picture = luminanceOf(pixels);
    const int band = std::min(16, std::min(picture.width, picture.height) / 8);
    double sum = 0.0;
    double squares = 0.0;
    double steps = 0.0;
    for (int y = band; y + 1 < picture.height - band; ++y) {
        for (int x = band; x + 1 < picture.width - band; ++x) {
            const float level = picture.at(x, y);
            for (const float next : {picture.at(x + 1, y), picture.at(x, y + 1)}) {
                const double step = static_cast<double>(next - level);
                sum += std::abs(step);
                squares += step * step;
                steps += 1.0;
            }
        }
    }
    return squares > 0.0 ? sum / std::sqrt(steps * squares) : 1.0;
}

} // namespace velorn
