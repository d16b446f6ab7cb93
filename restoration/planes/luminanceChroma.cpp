#include "restoration/planes/luminanceChroma.h"

#include <cstddef>

namespace restoration {

void toLuminanceChroma(std::span<float> red, std::span<float> green,
                       std::span<float> blue) noexcept {
    for (std::size_t i = 0; i < red.size(); ++i) {
        const float r = red[i];
        const float g = green[i];
        const float b = blue[i];
        red[i] = 0.299f * r + 0.587f * g + 0.114f * b;
        green[i] = -0.168736f * r - 0.331264f * g + 0.5f * b;
        blue[i] = 0.5f * r - 0.418688f * g - 0.081312f * b;
    }
}

// The coefficients are those of the inverse matrix, because the standard's rounded ones lose two
// digits of a float.
void fromLuminanceChroma(std::span<float> luminance, std::span<float> blueChroma,
                         std::span<float> redChroma) noexcept {
    for (std::size_t i = 0; i < luminance.size(); ++i) {
        const float y = luminance[i];
        const float cb = blueChroma[i];
        const float cr = redChroma[i];
        luminance[i] = y - 1.21889419e-6f * cb + 1.40199959f * cr;
        blueChroma[i] = y - 0.344135678f * cb - 0.714136156f * cr;
        redChroma[i] = y + 1.77200007f * cb + 4.06298063e-7f * cr;
    }
}

} // namespace restoration
