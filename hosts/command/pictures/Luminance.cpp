#include "hosts/command/pictures/Luminance.h"

#include "hosts/command/pictures/PixelScale.h"

namespace velorn {

Luminance luminanceOf(const RgbPixels& pixels) {
    Luminance luminance{pixels.width, pixels.height, {}};
    luminance.levels.reserve(pixels.pixelCount());
    const float scale = pixels.isEightBit() ? 1.0f : 255.0f / kFifteenBitWhite;
    constexpr auto kRed = static_cast<float>(kRedShare);
    constexpr auto kGreen = static_cast<float>(kGreenShare);
    constexpr auto kBlue = static_cast<float>(kBlueShare);
    std::visit(
        [&](const auto& samples) {
            for (std::size_t i = 0; i < samples.size(); i += 3) {
                luminance.levels.push_back(scale * (kRed * static_cast<float>(samples[i]) +
                                                    kGreen * static_cast<float>(samples[i + 1]) +
                                                    kBlue * static_cast<float>(samples[i + 2])));
            }
        },
        pixels.samples);
    return luminance;
}

} // namespace velorn
