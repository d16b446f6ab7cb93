#pragma once

#include "velorn.h"

#include <span>

namespace restoration {

/// Writes rows of a picture from planes of floats, 1.0 = white. Integers are rounded to nearest and
/// clamped; floats stay as they are. The picture has passed the checks of the boundary. Threads may
/// write different rows at once.
class PictureWriter {
public:
    explicit PictureWriter(const VelornPicture& picture) noexcept : m_picture(picture) {}

    const VelornPicture& picture() const noexcept { return m_picture; }

    /// Writes pixels x..x + count - 1 of row `y`, inside the picture: channel c from `channels[c]`.
    /// `channels` may have fewer entries than the picture has channels; the other channels stay.
    void writeRow(int y, int x, int count, std::span<const float* const> channels) const noexcept;

    /// The same for one channel.
    void writeChannel(int channel, int y, int x, int count, const float* source) const noexcept;

private:
    VelornPicture m_picture;
};

} // namespace restoration
