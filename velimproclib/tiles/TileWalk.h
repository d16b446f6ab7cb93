#pragma once

#include "velimproclib/tiles/planBlocks.h"

#include <cstdint>

namespace vel {

/// The part of the image under a tile and its margin, and how much of the tile the image does not
/// reach. All in pixels.
struct TileWindow {
    std::int32_t x; ///< first image column under the tile
    std::int32_t y;
    std::int32_t width; ///< image columns under the tile
    std::int32_t height;
    std::int32_t left; ///< tile columns before the image begins
    std::int32_t top;
    std::int32_t right; ///< tile columns after the image has ended
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

/// What `TileWalk::advance` found.
enum class WalkState {
    kTileAhead, ///< the position is that of the next tile
    kFinished,  ///< every tile was visited
    kStuck      ///< the plan's step cannot move the walk to the tile that is due
};

/// The position rule of both tile iterators: a scan of an image in row-major order, tiles from left
/// to right, rows of tiles from the top. The step is the nominal distance; the last tile of each
/// axis is pulled back so that it ends where the image ends, and overlaps its neighbour by more.
///
/// Next to the position the walk keeps how far the image is finished, which is what tells the
/// overlap of the tile at hand. One walk serves one thread, once.
struct TileWalk {
    std::int32_t m_imW = 0; ///< image width
    std::int32_t m_imH = 0;
    std::int32_t m_roiW = 0; ///< useful width of a tile
    std::int32_t m_roiH = 0;
    std::int32_t m_stepX = 0;
    std::int32_t m_stepY = 0;
    std::int32_t m_nBlkX = 0; ///< planned tiles across; the walk may make one more
    std::int32_t m_nBlkY = 0;
    std::int32_t m_curX = 0; ///< left edge of the current tile's useful part
    std::int32_t m_curY = 0;
    std::int32_t m_doneX = 0; ///< columns finished in this row of tiles
    std::int32_t m_doneY = 0; ///< image rows finished by the rows of tiles before this one
    bool m_storedATile = false;

    TileWalk() = default;
    TileWalk(std::int32_t imageWidth, std::int32_t imageHeight, const TileGeometry& across,
             const TileGeometry& down) noexcept;
    /// The walk that `layout` plans for an image. A layout without useful tiles gives a walk that
    /// finds no window or cannot be moved.
    TileWalk(std::int32_t imageWidth, std::int32_t imageHeight, const TileLayout& layout) noexcept;

    /// True until the first tile is stored: that tile is due without a step.
    bool atFirstTile() const noexcept;

    /// Moves to the next tile. Leaves the position alone when the walk is finished or stuck.
    WalkState advance() noexcept;

    /// Notes that the tile at hand is stored.
    void noteStored() noexcept;

    /// The image under the current tile with `border` pixels of margin around it. False when there
    /// is none, `window` is untouched then.
    bool windowOf(std::int32_t border, TileWindow& window) const noexcept;

    /// Full sizes of a tile with `border` pixels of margin around its useful part.
    std::int32_t widthWith(std::int32_t border) const noexcept;
    std::int32_t heightWith(std::int32_t border) const noexcept;

    /// Columns of the tile that the row of tiles has finished already; negative at a gap.
    std::int64_t overlapX() const noexcept { return std::int64_t{m_doneX} - m_curX; }
    /// Rows of the tile that are finished already; negative at a gap.
    std::int64_t overlapY() const noexcept { return std::int64_t{m_doneY} - m_curY; }

    /// Columns and rows of the useful part that lie inside the image.
    std::int32_t storedWidth() const noexcept;
    std::int32_t storedHeight() const noexcept;

    /// True when the current tile is the last of its row.
    bool endsARow() const noexcept;
};

} // namespace vel
