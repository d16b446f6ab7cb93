#pragma once

#include "velorn.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace velorntest {

/// Layout of a picture in memory.
struct Layout {
    int width = 0;
    int height = 0;
    int channels = 3;
    bool hasAlpha = false;
    VelornSamples samples = VELORN_SAMPLES_U8;
    int padding = 0; ///< bytes between rows
    bool isUpsideDown = false;
    int offset = 0; ///< bytes before the first row
};

/// A picture in memory of its own. Bytes outside of the pixels have the value `kGuard`.
class HostPicture {
public:
    static constexpr std::uint8_t kGuard = 0xA5;

    explicit HostPicture(const Layout& layout)
        : m_layout(layout),
          m_bytes(static_cast<std::size_t>(layout.offset) +
                      static_cast<std::size_t>(stride()) * static_cast<std::size_t>(layout.height),
                  kGuard) {}

    const Layout& layout() const { return m_layout; }
    int sampleBytes() const {
        return m_layout.samples == VELORN_SAMPLES_U8    ? 1
               : m_layout.samples == VELORN_SAMPLES_U16 ? 2
                                                        : 4;
    }
    int pixelBytes() const { return sampleBytes() * m_layout.channels; }
    int rowBytes() const { return pixelBytes() * m_layout.width; }
    int stride() const { return rowBytes() + m_layout.padding; }

    VelornPicture view() {
        VelornPicture picture{};
        picture.data = row(0);
        picture.rowStride = m_layout.isUpsideDown ? -stride() : stride();
        picture.width = m_layout.width;
        picture.height = m_layout.height;
        picture.channels = m_layout.channels;
        picture.hasAlpha = m_layout.hasAlpha;
        picture.samples = m_layout.samples;
        return picture;
    }

    std::uint8_t* row(int y) {
        const int stored = m_layout.isUpsideDown ? m_layout.height - 1 - y : y;
        return m_bytes.data() + m_layout.offset + static_cast<std::ptrdiff_t>(stored) * stride();
    }

    /// A sample on the scale of 0..1.
    double get(int x, int y, int channel) {
        const std::uint8_t* const at = address(x, y, channel);
        if (m_layout.samples == VELORN_SAMPLES_U8) {
            return *at / 255.0;
        }
        if (m_layout.samples == VELORN_SAMPLES_U16) {
            std::uint16_t value = 0;
            std::memcpy(&value, at, sizeof value);
            return value / 65535.0;
        }
        float value = 0.0f;
        std::memcpy(&value, at, sizeof value);
        return double{value};
    }

    /// Integer samples are rounded and clamped.
    void set(int x, int y, int channel, double value) {
        std::uint8_t* const at = address(x, y, channel);
        const double clamped = std::clamp(value, 0.0, 1.0);
        if (m_layout.samples == VELORN_SAMPLES_U8) {
            *at = static_cast<std::uint8_t>(clamped * 255.0 + 0.5);
        } else if (m_layout.samples == VELORN_SAMPLES_U16) {
            const auto sample = static_cast<std::uint16_t>(clamped * 65535.0 + 0.5);
            std::memcpy(at, &sample, sizeof sample);
        } else {
            const auto sample = static_cast<float>(value);
            std::memcpy(at, &sample, sizeof sample);
        }
    }

    /// The pixels row by row, without the bytes between the rows.
    std::vector<std::uint8_t> pixels() {
        std::vector<std::uint8_t> all;
        for (int y = 0; y < m_layout.height; ++y) {
            all.insert(all.end(), row(y), row(y) + rowBytes());
        }
        return all;
    }

    /// Everything, guards included.
    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

    bool guardsAreIntact() {
        std::vector<std::uint8_t> copy = m_bytes;
        for (int y = 0; y < m_layout.height; ++y) {
            const std::ptrdiff_t start = row(y) - m_bytes.data();
            std::fill_n(copy.begin() + start, rowBytes(), kGuard);
        }
        return std::ranges::all_of(copy, [](std::uint8_t byte) { return byte == kGuard; });
    }

private:
    std::uint8_t* address(int x, int y, int channel) {
        return row(y) + static_cast<std::ptrdiff_t>(x) * pixelBytes() + channel * sampleBytes();
    }

    Layout m_layout;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace velorntest
