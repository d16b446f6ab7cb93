#pragma once

#include "velorn.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace restoration {

/// A picture of 8 bits without alpha that shows a smooth function of place and channel.
class MadePicture {
public:
    MadePicture(int width, int height, int channels) : m_width(width), m_channels(channels) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                for (int c = 0; c < channels; ++c) {
                    m_samples.push_back(static_cast<std::uint8_t>((x * 3 + y * 7 + c * 50) % 251));
                }
            }
        }
        m_picture = {m_samples.data(), std::ptrdiff_t{width} * channels, width, height, channels, 0,
                     VELORN_SAMPLES_U8};
    }
    MadePicture(const MadePicture&) = delete;
    MadePicture& operator=(const MadePicture&) = delete;

    const VelornPicture& picture() const noexcept { return m_picture; }
    VelornPicture& picture() noexcept { return m_picture; }
    float at(int x, int y, int channel) const {
        const std::ptrdiff_t pixel = std::ptrdiff_t{y} * m_width + x;
        return static_cast<float>(
                   m_samples[static_cast<std::size_t>(pixel * m_channels + channel)]) /
               255.0f;
    }

private:
    int m_width;
    int m_channels;
    std::vector<std::uint8_t> m_samples;
    VelornPicture m_picture;
};

} // namespace restoration
