#pragma once

#include "velimproclib/tiles/TilePlanes.h"
#include "velimproclib/tiles/TileTaper.h"
#include "velimproclib/tiles/TileWalk.h"

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace vel {

/// Walks an interleaved three-channel image tile by tile: hands out three float planes with a
/// margin around the tile, takes them back when they are processed and stitches them into the
/// target with linear blends over the overlaps.
///
/// Tiles of a row are blended into the strip, a band of full image width in the target's pixel
/// type, and a finished strip is blended into the target: each direction needs one pass, the target
/// is touched once per row of tiles, and scratch memory is bounded by one row of tiles. The
/// horizontal blend takes place before the rounding to the pixel type, to nearest; the vertical
/// blend on finished pixels, with truncation. Pixels that are equal in both stay as they are.
///
/// Plane values: 1.0 stands for 256 (CV_8UC3) or 32768 (CV_16UC3), so that 8-bit white is 255/256
/// and 16-bit values may exceed 1.
///
/// The order of calls is `init`, `nextBlock`, then for each tile the caller's stages, `doneABlock`
/// and `nextBlock`, until that returns null. One object serves one walk and one thread; inside, it
/// works in parallel, and the results do not depend on the number of threads.
///
/// Integer failures: 101 for a gap between tiles of a row, or for a plan whose step cannot move the
/// walk (the margin leaves no more useful tile than the overlap); 0 for a gap between rows of
/// tiles; 102 for a tile without source pixels. Rows that are merged already stay in the target.
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

    /// The planes of the next tile, of the same size each time; null when all tiles are done.
    TilePlanes* nextBlock();

    /// Takes the tile back: its useful part goes to the strip, and after the last tile of a row the
    /// strip to the target. The planes' values are used up.
    void doneABlock();

    /// The plan's counts, for progress sums; the walk may make one tile more along an axis.
    std::int32_t tilesAcross() const noexcept { return m_walk.m_nBlkX; }
    std::int32_t tilesDown() const noexcept { return m_walk.m_nBlkY; }

private:
    bool advance();
    void convertBlkDupBorder();
    void createPlanes();
    void storeTile();
    void mergeRowOfTiles();

    template <class T>
    void loadRows(const TileWindow& window, cv::Range rows);
    template <class T>
    void storeRows(std::int32_t overlapX, std::int32_t width, cv::Range rows);

    std::int32_t m_border = 0;
    std::int32_t m_taper = 0;
    cv::Mat m_in;
    cv::Mat m_out;
    TileWalk m_walk;
    TilePlanes m_blk;
    cv::Mat m_strip;           ///< of the source's type, as high as a tile, as wide as the image
    cv::Mat m_scratch;         ///< one channel of a tile, in the source's depth
    std::vector<float> m_ramp; ///< blend weights of the overlap at hand
    CTileTaper m_tileTaper;
};

} // namespace vel
