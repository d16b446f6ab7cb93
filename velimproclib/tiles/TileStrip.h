#pragma once

#include "velimproclib/images/stepOf.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/tiles/fillRamp.h"
#include "velimproclib/tiles/forRowChunks.h"
#include "velimproclib/tiles/PixelDepth.h"
#include "velimproclib/tiles/stripBlends.h"
#include "velimproclib/tiles/TileWalk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <opencv2/core.hpp>
#include <vector>

namespace vel {

/// The band in which a row of tiles is stitched: as high as the useful part of a tile, as wide as
/// the image, in the type of the image. Each tile fades in over its left neighbour, and the
/// finished strip fades in over the row of tiles above it in the target: each direction needs one
/// pass, and the target is touched once per row of tiles.
class TileStrip {
public:
    /// Makes the strip for the tiles of `walk`, in an image of the OpenCV type `type`.
    /// @throws cv::Exception or std::bad_alloc when memory is exhausted
    void create(const TileWalk& walk, int type) {
        m_pixels.create(std::max(walk.usefulHeight(), 0), walk.imageWidth(), type);
        m_ramp.assign(static_cast<std::size_t>(std::max(walk.tileWidth(), walk.tileHeight())) + 1,
                      0.0f);
    }

    /// Gets the weights ready for the current tile of `walk`, whose column overlap is not negative.
    void beginTile(const TileWalk& walk) noexcept {
        m_x = walk.x();
        m_overlap = static_cast<std::size_t>(walk.overlapX());
        fillRamp(m_ramp, static_cast<std::int32_t>(m_overlap));
    }

    /// Fades the first columns of rows of the current tile in over the strip.
    /// @param rows one channel of the tile from its row `firstRow` on, CV_32FC1, on the scale of
    ///             `T`; nothing is rounded to `T` here
    template <class T>
    void fadeIn(cv::Mat& rows, std::int32_t firstRow, std::size_t channel) {
        const auto channels = static_cast<std::size_t>(m_pixels.channels());
        for (int y = 0; y < rows.rows; ++y) {
            fadeInColumns(rows.ptr<float>(y), elementsOf<T>(firstRow + y, channel), channels,
                          m_ramp.data(), m_overlap);
        }
    }

    /// The elements of one channel under the current tile, from its row `row` on.
    template <class T>
    T* elementsOf(std::int32_t row, std::size_t channel) {
        const auto channels = static_cast<std::size_t>(m_pixels.channels());
        return m_pixels.ptr<T>(row) + static_cast<std::size_t>(m_x) * channels + channel;
    }

    /// Bytes between the rows of the strip.
    std::int32_t step() const { return stepOf(m_pixels); }

    /// Merges the finished strip into the rows of `target` (of the image's size and type) that the
    /// current row of tiles covers: faded in over finished rows, copied from there on. The row
    /// overlap of `walk` is not negative; `Sum` is that of `fadeInRow`.
    template <class T, class Sum>
    void mergeInto(cv::Mat& target, const TileWalk& walk) {
        const auto overlap = static_cast<std::int32_t>(walk.overlapY());
        const auto elements =
            static_cast<std::size_t>(m_pixels.cols) * static_cast<std::size_t>(m_pixels.channels());
        fillRamp(m_ramp, overlap);
        forRowChunks(m_pixels.cols, walk.storedHeight(), [&](cv::Range rows) {
            for (std::int32_t y = rows.start; y < rows.end; ++y) {
                const T* const fresh = m_pixels.ptr<T>(y);
                std::uint8_t* const row = target.ptr(walk.y() + y);
                if (y >= overlap) {
                    std::memcpy(row, fresh, elements * sizeof(T));
                } else {
                    fadeInRow<Sum>(fresh, reinterpret_cast<Unaligned<T>*>(row),
                                   m_ramp[static_cast<std::size_t>(y)], elements);
                }
            }
        });
    }

private:
    cv::Mat m_pixels;
    std::vector<float> m_ramp; ///< weights of the current overlap
    std::int32_t m_x = 0;
    std::size_t m_overlap = 0;
};

} // namespace vel
