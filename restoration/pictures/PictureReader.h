#pragma once

#include "velorn.h"

#include <span>

namespace restoration {

/// Reads rows of a picture as planes of floats, 1.0 = white. The picture has passed the checks of
/// the boundary. Const functions may run on any number of threads.
class PictureReader {
public:
    explicit PictureReader(const VelornPicture& picture) noexcept : m_picture(picture) {}

    int width() const noexcept { return m_picture.width; }
    int height() const noexcept { return m_picture.height; }
    /// Channels without alpha, 1..4.
    int colours() const noexcept;
    bool hasAlpha() const noexcept { return m_picture.hasAlpha != 0; }
    const VelornPicture& picture() const noexcept { return m_picture; }

    /// Reads pixels x..x + count - 1 of row `y`, inside the picture: channel c to `channels[c]`.
    /// `channels` may have fewer entries than the picture has channels. Floats that are not finite
    /// give 0.
    void readRow(int y, int x, int count, std::span<float* const> channels) const noexcept;

    /// The same for one channel.
    void readChannel(int channel, int y, int x, int count, float* target) const noexcept;

private:
    VelornPicture m_picture;
};

} // namespace restoration
