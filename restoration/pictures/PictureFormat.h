#pragma once

#include "velorn.h"

#include <cstddef>
#include <cstdint>

namespace restoration {

/// Channels that are not alpha.
inline int colourChannels(const VelornPicture& picture) noexcept {
    return picture.hasAlpha != 0 ? picture.channels - 1 : picture.channels;
}

/// Bytes of a sample of a VelornSamples.
inline std::size_t bytesPerSample(std::int32_t samples) noexcept {
    return samples == VELORN_SAMPLES_U8 ? 1 : samples == VELORN_SAMPLES_U16 ? 2 : 4;
}

inline std::size_t bytesPerPixel(const VelornPicture& picture) noexcept {
    return bytesPerSample(picture.samples) * static_cast<std::size_t>(picture.channels);
}

/// The first byte of a pixel. The row stride may be negative.
inline std::byte* pixelAt(const VelornPicture& picture, int x, int y) noexcept {
    return static_cast<std::byte*>(picture.data) + picture.rowStride * std::ptrdiff_t{y} +
           static_cast<std::ptrdiff_t>(bytesPerPixel(picture)) * x;
}

} // namespace restoration
