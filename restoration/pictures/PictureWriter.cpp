#include "restoration/pictures/PictureWriter.h"

#include "restoration/pictures/PictureFormat.h"
#include "restoration/pictures/sampleRows.h"

#include <cstddef>

namespace restoration {

void PictureWriter::writeRow(int y, int x, int count,
                             std::span<const float* const> channels) const noexcept {
    writeSamples(m_picture.samples, m_picture.channels, channels, static_cast<std::size_t>(count),
                 pixelAt(m_picture, x, y));
}

void PictureWriter::writeChannel(int channel, int y, int x, int count,
                                 const float* source) const noexcept {
    std::byte* first = pixelAt(m_picture, x, y) +
                       static_cast<std::size_t>(channel) * bytesPerSample(m_picture.samples);
    writeSamples(m_picture.samples, m_picture.channels, {&source, 1},
                 static_cast<std::size_t>(count), first);
}

} // namespace restoration
