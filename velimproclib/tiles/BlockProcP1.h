#pragma once

#include "velimproclib/tiles/TileTaper.h"
#include "velimproclib/tiles/TileWalk.h"

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace vel {

/// Walks a one-channel image block by block: hands out a float block with a margin around it, takes
/// it back when it is processed and stitches it into the output with linear ramps over the
/// overlaps.
///
/// Blocks of a row are blended into the strip, a band of full image width in the image's type, and
/// a finished strip is blended into the output: memory is bounded by a block and a strip. The
/// horizontal blend takes place on floats, before the rounding to nearest; the vertical blend on
/// finished pixels, with truncation.
///
/// Block values: 1.0 stands for 255 (CV_8UC1) or 32767 (CV_16SC1).
///
/// The order of calls is `init`, `nextBlock`, then for each block the caller's work in place,
/// `doneABlock` and `nextBlock`, until that returns null. One object serves one walk and one
/// thread; inside, it works in parallel, and the results do not depend on the number of threads.
class CBlockProcP1 {
public:
    /// Sets up the walk. `in` and `out` share the caller's pixels; with an empty `out` blocks are
    /// handed out and nothing is written.
    ///
    /// @param blockW,blockH whole sizes of a block, its margins included
    /// @param align16 true for the layout with lengths that are multiples of 16, see `planBlocks`
    /// @param overlap wanted overlap of neighbouring blocks' useful parts, in pixels
    /// @param border  margin on each side of the useful part, in pixels
    /// @param taper   1 makes each block periodic, see `CTileTaper`
    /// @return 1
    /// @throws const char* unless `in` is CV_8UC1 or CV_16SC1, `out` is empty or of the size and
    ///         type of `in`, and `border` is not negative; cv::Exception or std::bad_alloc when
    ///         memory is exhausted
    int init(const cv::Mat& in, const cv::Mat& out, std::int32_t blockW, std::int32_t blockH,
             bool align16, std::int32_t overlap, std::int32_t border, std::int32_t taper);

    /// The next block, CV_32FC1 and of the same size each time; null when all blocks are done.
    /// @throws const char* when no pixel of the image falls into the block, or when the plan cannot
    ///         move the walk
    cv::Mat* nextBlock();

    /// Takes the block back. Its values are used up.
    /// @throws const char* for a gap between blocks
    void doneABlock();

    /// Fills the margins of `inOut` (CV_32FC1) by replication: every pixel there takes the value of
    /// the nearest one that the margins leave, which is at least one pixel in all.
    /// @return 1
    /// @throws const char* for an image of another type
    static int imageExtendBorder(cv::Mat& inOut, std::int32_t left, std::int32_t top,
                                 std::int32_t right, std::int32_t bottom);

    /// The plan's counts, for progress sums; the walk may make one block more along an axis.
    std::int32_t blocksAcross() const noexcept { return m_walk.m_nBlkX; }
    std::int32_t blocksDown() const noexcept { return m_walk.m_nBlkY; }

private:
    bool advance();
    int convertBlkDupBorder();
    void scaleBlock(float factor);

    template <class T>
    void loadWindow(const TileWindow& window);
    template <class T>
    void storeBlock();
    template <class T>
    void mergeRowOfBlocks();

    float m_spare = -0.05f; ///< read by nothing
    std::int32_t m_border = 0;
    std::int32_t m_taper = 0;
    cv::Mat m_in;
    cv::Mat m_out;
    TileWalk m_walk;
    cv::Mat m_blk;
    cv::Mat m_strip;           ///< of the image's type, as high as a block, as wide as the image
    std::vector<float> m_ramp; ///< blend weights of the overlap at hand
    CTileTaper m_tileTaper;
};

} // namespace vel
