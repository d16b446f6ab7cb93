#pragma once

#include "velimproclib/tiles/TilePlanes.h"
#include "velimproclib/tiles/TileStrip.h"
#include "velimproclib/tiles/TileTaper.h"
#include "velimproclib/tiles/TileWalk.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Walks an interleaved three-channel image tile by tile: hands out three float planes with a
/// margin around the tile, takes the processed planes back and stitches them into the target with
/// linear blends over the overlaps.
///
/// Scratch memory is bounded by a tile and a strip, see `TileStrip`. The horizontal blend takes
/// place on floats, before they are rounded to nearest; the vertical blend on finished pixels,
/// rounded to single precision and truncated. Pixels that are equal in both stay as they are.
///
/// Plane values: 1.0 stands for 256 (CV_8UC3) or 32768 (CV_16UC3), so that 8-bit white is 255/256
/// and 16-bit values may exceed 1.
///
/// The order of calls is `init`, `nextBlock`, then for each tile the caller's stages, `doneABlock`
/// and `nextBlock`, until `nextBlock` returns null. An object is for one walk and one thread;
/// inside, it works in parallel, and the results do not depend on the number of threads.
///
/// Integer failures: `kColumnGap` for a gap between tiles of a row, or for a plan whose step cannot
/// move the walk (the useful part of a tile is no longer than the overlap); `kRowGap` for a gap
/// between rows of tiles; `kNoPixels` for a tile without source pixels. Merged rows stay in the
/// target.
class CBlockProcP3 {
public:
    /// Sets up the walk. `source` and `target` share the caller's pixels.
    ///
    /// @param tileWidth,tileHeight full sizes of a tile, its margin included
    /// @param mode    layout of the tiles, see `planBlocks`
    /// @param overlap wanted overlap of neighbouring tiles' useful parts, in pixels
    /// @param border  margin on each side of the useful part, in pixels, 0 or more
    /// @param taper   1 makes each tile periodic, see `CTileTaper`
    /// @throws const char* unless both are CV_8UC3 or both CV_16UC3, of one size, and `border` is
    ///         not negative; cv::Exception when memory is exhausted
    void init(const cv::Mat& source, const cv::Mat& target, std::int32_t tileWidth,
              std::int32_t tileHeight, std::uint8_t mode, std::int32_t overlap, std::int32_t border,
              std::int32_t taper);

    /// Returns the planes of the next tile, of the same size each time, or null after the last.
    TilePlanes* nextBlock();

    /// Takes the tile back: its useful part goes to the strip, and after the last tile of a row the
    /// strip goes to the target. The values of the planes are undefined afterwards.
    void doneABlock();

    /// The plan's counts, for progress sums; the walk may make one tile more along an axis.
    std::int32_t tilesAcross() const noexcept { return m_walk.tilesAcross(); }
    std::int32_t tilesDown() const noexcept { return m_walk.tilesDown(); }

private:
    bool advance();
    void convertBlkDupBorder();
    void createPlanes();
    void storeTile();
    void mergeRowOfTiles();

    /// Rows are counted from the first of the window and of the useful part.
    template <class T>
    void loadRows(const TileWindow& window, cv::Range rows);
    template <class T>
    void storeRows(const cv::Rect& useful, cv::Range rows);

    std::int32_t m_taper = 0;
    cv::Mat m_in;
    cv::Mat m_out;
    TileWalk m_walk;
    TilePlanes m_blk;
    TileStrip m_strip;
    cv::Mat m_scratch; ///< one channel of a tile, in the source's depth
    CTileTaper m_tileTaper;
};

} // namespace vel
