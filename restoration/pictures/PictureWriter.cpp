#include "restoration/pictures/PictureWriter.h"

#include "restoration/pictures/PictureFormat.h"
#include "restoration/pictures/samples-inl.h"

#include <cstddef>

namespace restoration {
namespace {

/// Samples of one channel, `Channels` samples apart.
template <class Sample, std::size_t Channels>
void writeSamples(const float* source, std::size_t count, std::byte* target) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const Sample sample = fromFloat<Sample>(source[i]);
        std::memcpy(target + i * Channels * sizeof(Sample), &sample, sizeof sample);
    }
}

template <class Sample>
void writeSamples(const float* source, int channels, std::size_t count,
                  std::byte* target) noexcept {
    switch (channels) {
    case 1:
        return writeSamples<Sample, 1>(source, count, target);
    case 2:
        return writeSamples<Sample, 2>(source, count, target);
    case 3:
        return writeSamples<Sample, 3>(source, count, target);
    default:
        return writeSamples<Sample, 4>(source, count, target);
    }
}

} // namespace

void PictureWriter::writeRow(int y, int x, int count,
                             std::span<const float* const> channels) const noexcept {
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        writeChannel(static_cast<int>(channel), y, x, count, channels[channel]);
    }
}

void PictureWriter::writeChannel(int channel, int y, int x, int count,
                                 const float* source) const noexcept {
    const auto pixels = static_cast<std::size_t>(count);
    std::byte* target = pixelAt(m_picture, x, y) +
                        static_cast<std::size_t>(channel) * bytesPerSample(m_picture.samples);
    switch (m_picture.samples) {
    case VELORN_SAMPLES_U8:
        return writeSamples<std::uint8_t>(source, m_picture.channels, pixels, target);
    case VELORN_SAMPLES_U16:
        return writeSamples<std::uint16_t>(source, m_picture.channels, pixels, target);
    default:
        return writeSamples<float>(source, m_picture.channels, pixels, target);
    }
}

} // namespace restoration
