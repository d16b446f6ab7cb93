#pragma once

#include "velimproclib/tiles/planBlocks.h"

#include <cstdint>
#include <optional>

namespace vel {

/// The part of the image under a tile and its margin, and the parts of the tile outside the image.
/// All in pixels.
struct TileWindow {
    std::int32_t x; ///< first image column under the tile
    std::int32_t y;
    std::int32_t width; ///< image columns under the tile, at least 1
    std::int32_t height;
    std::int32_t left; ///< tile columns before the first image column
    std::int32_t top;
    std::int32_t right; ///< tile columns after the last image column
    std::int32_t bottom;
};

/// How an image is cut into tiles. All in pixels.
struct TileLayout {
    std::int32_t tileWidth; ///< full sizes of a tile, its margin included
    std::int32_t tileHeight;
    std::uint8_t mode;    ///< of `planBlocks`
    std::int32_t overlap; ///< wanted overlap of neighbouring tiles' useful parts
    std::int32_t border;  ///< margin on each side of the useful part, 0 or more
};

/// The result of `TileWalk::advance`.
enum class WalkState {
    kTileAhead, ///< the position is that of the next tile
    kFinished,  ///< every tile was visited
    kStuck      ///< the step of the plan cannot move the walk to the next tile
};

/// The position rule of both tile iterators: a scan of an image in row-major order, tiles from left
/// to right, rows of tiles from the top. The step is the nominal distance; the last tile of each
/// axis is pulled back so that it ends where the image ends, and overlaps its neighbour by more.
///
/// The walk also keeps how far the image is finished, which gives the overlap of the current tile.
/// A walk is for one thread and one use.
class TileWalk {
public:
    TileWalk() = default;
    /// The walk over an image of two planned axes, with `border` pixels of margin (0 or more).
    TileWalk(std::int32_t imageWidth, std::int32_t imageHeight, const TileGeometry& across,
             const TileGeometry& down, std::int32_t border) noexcept;
    /// The walk that `layout` plans for an image. A layout without useful tiles gives a walk that
    /// has no window or is stuck.
    TileWalk(std::int32_t imageWidth, std::int32_t imageHeight, const TileLayout& layout) noexcept;

    /// Planned tiles; the walk may make one more along each axis.
    std::int32_t tilesAcross() const noexcept { return m_across.count; }
    std::int32_t tilesDown() const noexcept { return m_down.count; }

    std::int32_t imageWidth() const noexcept { return m_across.total; }
    std::int32_t border() const noexcept { return m_border; }
    /// Sizes of every tile with its margin.
    std::int32_t tileWidth() const noexcept;
    std::int32_t tileHeight() const noexcept;
    /// Height of the useful part of every tile. Negative where the margins outgrow the tile.
    std::int32_t usefulHeight() const noexcept { return m_down.length; }

    /// True until the first tile is stored: the walk begins there, without `advance`.
    bool atFirstTile() const noexcept;

    /// Moves to the next tile. The position does not change when the walk is finished or stuck.
    WalkState advance() noexcept;

    /// Notes that the current tile is stored.
    void noteStored() noexcept;

    /// Left and top edge of the current tile's useful part, in the image.
    std::int32_t x() const noexcept { return m_across.current; }
    std::int32_t y() const noexcept { return m_down.current; }

    /// The image under the current tile and its margin; nothing where there is none.
    std::optional<TileWindow> window() const noexcept;

    /// Columns of the tile that its row of tiles has finished already; negative at a gap.
    std::int64_t overlapX() const noexcept { return m_across.overlap(); }
    /// Rows of the tile that are finished already; negative at a gap.
    std::int64_t overlapY() const noexcept { return m_down.overlap(); }

    /// Columns and rows of the useful part that are inside the image.
    std::int32_t storedWidth() const noexcept { return m_across.stored(); }
    std::int32_t storedHeight() const noexcept { return m_down.stored(); }

    /// True when the current tile is the last of its row.
    bool endsARow() const noexcept { return m_across.reachesEnd(); }

private:
    struct Axis {
        std::int32_t total = 0;  ///< length of the image
        std::int32_t length = 0; ///< useful length of a tile
        std::int32_t step = 0;
        std::int32_t count = 0;
        std::int32_t current = 0; ///< start of the current tile's useful part
        std::int32_t done = 0;    ///< finished pixels before and under the current tile

        Axis() = default;
        Axis(std::int32_t imageLength, const TileGeometry& plan) noexcept;
        bool reachesEnd() const noexcept;
        /// Moves to the next tile, pulled back where it would end past the image.
        void moveOn() noexcept;
        std::int64_t overlap() const noexcept { return std::int64_t{done} - current; }
        std::int32_t stored() const noexcept;
    };

    Axis m_across;
    Axis m_down;
    std::int32_t m_border = 0;
    bool m_storedATile = false;
};

} // namespace vel
