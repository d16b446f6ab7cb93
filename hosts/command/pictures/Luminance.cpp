#include "hosts/command/pictures/Luminance.h"

#include "hosts/command/pictures/PixelScale.h"

namespace velorn {

Luminance luminanceOf(const RgbPixels& pixels) {
    Luminance luminance{pixels.width, pixels.height, {}};
    luminance.levels.reserve(pixels.pixelCount());
    const float scale = pixels.isEightBit() ? 1.0f : 255.0f / kFifteenBitWhite;
    std::visit(
        [&](const auto& samples) {
            for (std::size_t i = 0; i < samples.size(); i += 3) {
                luminance.levels.push_back(scale * (0.299f * static_cast<float>(samples[i]) +
                                                    0.587f * static_cast<float>(samples[i + 1]) +
                                                    0.114f * static_cast<float>(samples[i + 2])));
            }
        },
        pixels.samples);
    return luminance;
}

} // namespace velorn
