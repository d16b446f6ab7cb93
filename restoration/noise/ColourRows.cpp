#include "restoration/noise/ColourRows.h"

#include <cstdint>

namespace restoration {
namespace {

float stepOf(std::int32_t samples) noexcept {
    switch (samples) {
    case VELORN_SAMPLES_U8:
        return 1.0f / 255.0f;
    case VELORN_SAMPLES_U16:
        return 1.0f / 65535.0f;
    default:
        return 0.0f;
    }
}

} // namespace

ColourRows colourRows(const PictureReader& picture) {
    return {picture.width(), picture.height(), picture.colours(), stepOf(picture.picture().samples),
            [picture](int row, int channel, float* target) {
                picture.readChannel(channel, row, 0, picture.width(), target);
            }};
}

} // namespace restoration
