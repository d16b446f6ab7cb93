#pragma once

#include "restoration/pictures/PictureFormat.h"

#include <cstring>
#include <vector>

namespace restoration {

/// A picture in memory of its own.
class PictureBuffer {
public:
    /// A picture with the sides, channels and samples of `format`; content 0.
    /// @throws std::bad_alloc
    explicit PictureBuffer(const VelornPicture& format) : m_picture(format) {
        const std::size_t rowBytes = bytesPerPixel(format) * static_cast<std::size_t>(format.width);
        m_bytes.resize(rowBytes * static_cast<std::size_t>(format.height));
        m_picture.data = m_bytes.data();
        m_picture.rowStride = static_cast<std::ptrdiff_t>(rowBytes);
    }
    PictureBuffer(const PictureBuffer&) = delete;
    PictureBuffer& operator=(const PictureBuffer&) = delete;

    const VelornPicture& picture() const noexcept { return m_picture; }

    /// Copies all pixels to a picture of the same format.
    void copyTo(const VelornPicture& target) const noexcept {
        for (int y = 0; y < m_picture.height; ++y) {
            std::memcpy(pixelAt(target, 0, y), pixelAt(m_picture, 0, y),
                        static_cast<std::size_t>(m_picture.rowStride));
        }
    }

private:
    VelornPicture m_picture;
    std::vector<std::byte> m_bytes;
};

} // namespace restoration
