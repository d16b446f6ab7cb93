#pragma once

#include "velimproclib/tiles/TileStrip.h"
#include "velimproclib/tiles/TileTaper.h"
#include "velimproclib/tiles/TileWalk.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Walks a one-channel image block by block: hands out a float block with a margin around it, takes
/// the processed block back and stitches it into the output with linear ramps over the overlaps.
///
/// Memory is bounded by a block and a strip, see `TileStrip`. The horizontal blend takes place on
/// floats, before they are rounded to nearest; the vertical blend on finished pixels, in double
/// precision with truncation.
///
/// Block values: 1.0 stands for 255 (CV_8UC1) or 32767 (CV_16SC1).
///
/// The order of calls is `init`, `nextBlock`, then for each block the caller's work in place,
/// `doneABlock` and `nextBlock`, until `nextBlock` returns null. An object is for one walk and one
/// thread; inside, it works in parallel, and the results do not depend on the number of threads.
class CBlockProcP1 {
public:
    /// Sets up the walk. `in` and `out` share the caller's pixels; with an empty `out` the walk
    /// hands out blocks and writes nothing.
    ///
    /// @param blockW,blockH whole sizes of a block, its margins included
    /// @param align16 true for the layout with lengths that are multiples of 16, see `planBlocks`.
    ///                No export selects it.
    /// @param overlap wanted overlap of neighbouring blocks' useful parts, in pixels
    /// @param border  margin on each side of the useful part, in pixels
    /// @param taper   1 makes each block periodic, see `CTileTaper`
    /// @return 1
    /// @throws const char* unless `in` is CV_8UC1 or CV_16SC1, `out` is empty or of the size and
    ///         type of `in`, and `border` is not negative; cv::Exception or std::bad_alloc when
    ///         memory is exhausted
    int init(const cv::Mat& in, const cv::Mat& out, std::int32_t blockW, std::int32_t blockH,
             bool align16, std::int32_t overlap, std::int32_t border, std::int32_t taper);

    /// Returns the next block, CV_32FC1 and of the same size each time, or null after the last.
    /// @throws const char* when no pixel of the image falls into the block, or when the plan cannot
    ///         move the walk
    cv::Mat* nextBlock();

    /// Takes the block back. Its values are undefined afterwards.
    /// @throws const char* for a gap between blocks
    void doneABlock();

    /// Fills the margins of `inOut` (CV_32FC1) by replication: every pixel there takes the value of
    /// the nearest pixel inside the margins. At least one pixel is inside. No export reaches this
    /// function: `nextBlock` fills the margins while it loads.
    /// @return 1
    /// @throws const char* for an image of another type
    static int imageExtendBorder(cv::Mat& inOut, std::int32_t left, std::int32_t top,
                                 std::int32_t right, std::int32_t bottom);

    /// The plan's counts, for progress sums; the walk may make one block more along an axis.
    std::int32_t blocksAcross() const noexcept { return m_walk.tilesAcross(); }
    std::int32_t blocksDown() const noexcept { return m_walk.tilesDown(); }

private:
    bool advance();
    int convertBlkDupBorder();
    void storeBlock();
    void mergeRowOfBlocks();

    /// Rows are counted from the first of the window and of the useful part.
    template <class T>
    void loadRows(const TileWindow& window, cv::Range rows);
    template <class T>
    void storeRows(cv::Mat& useful, cv::Range rows);

    [[maybe_unused]] float m_spare = -0.05f;
    std::int32_t m_taper = 0;
    cv::Mat m_in;
    cv::Mat m_out;
    TileWalk m_walk;
    cv::Mat m_blk;
    TileStrip m_strip;
    CTileTaper m_tileTaper;
};

} // namespace vel
