#include "restoration/pictures/PictureReader.h"

#include "restoration/pictures/PictureFormat.h"
#include "restoration/pictures/samples-inl.h"

#include <cstddef>

namespace restoration {
namespace {

/// Samples of one channel, `Channels` samples apart. The constant distance lets the compiler
/// vectorise the loop.
template <class Sample, std::size_t Channels>
void readSamples(const std::byte* source, std::size_t count, float* target) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = toFloat(loadSample<Sample>(source + i * Channels * sizeof(Sample)));
    }
}

template <class Sample>
void readSamples(const std::byte* source, int channels, std::size_t count, float* target) noexcept {
    switch (channels) {
    case 1:
        return readSamples<Sample, 1>(source, count, target);
    case 2:
        return readSamples<Sample, 2>(source, count, target);
    case 3:
        return readSamples<Sample, 3>(source, count, target);
    default:
        return readSamples<Sample, 4>(source, count, target);
    }
}

} // namespace

int PictureReader::colours() const noexcept {
    return colourChannels(m_picture);
}

void PictureReader::readRow(int y, int x, int count,
                            std::span<float* const> channels) const noexcept {
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        readChannel(static_cast<int>(channel), y, x, count, channels[channel]);
    }
}

void PictureReader::readChannel(int channel, int y, int x, int count,
                                float* target) const noexcept {
    const auto pixels = static_cast<std::size_t>(count);
    const std::byte* source = pixelAt(m_picture, x, y) +
                              static_cast<std::size_t>(channel) * bytesPerSample(m_picture.samples);
    switch (m_picture.samples) {
    case VELORN_SAMPLES_U8:
        return readSamples<std::uint8_t>(source, m_picture.channels, pixels, target);
    case VELORN_SAMPLES_U16:
        return readSamples<std::uint16_t>(source, m_picture.channels, pixels, target);
    default:
        return readSamples<float>(source, m_picture.channels, pixels, target);
    }
}

} // namespace restoration
