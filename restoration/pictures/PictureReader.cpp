#include "restoration/pictures/PictureReader.h"

#include "restoration/pictures/PictureFormat.h"
#include "restoration/pictures/sampleRows.h"

#include <cstddef>

namespace restoration {

int PictureReader::colours() const noexcept {
    return colourChannels(m_picture);
}

void PictureReader::readRow(int y, int x, int count,
                            std::span<float* const> channels) const noexcept {
    readSamples(m_picture.samples, m_picture.channels, pixelAt(m_picture, x, y),
                static_cast<std::size_t>(count), channels);
}

void PictureReader::readChannel(int channel, int y, int x, int count,
                                float* target) const noexcept {
    const std::byte* first = pixelAt(m_picture, x, y) +
                             static_cast<std::size_t>(channel) * bytesPerSample(m_picture.samples);
    readSamples(m_picture.samples, m_picture.channels, first, static_cast<std::size_t>(count),
                {&target, 1});
}

} // namespace restoration
