#pragma once

#include "velimproclib/primitives/fft/LaneFftPlan.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vel {

/// The two-dimensional transform of real w by h single-precision images whose sides are powers of
/// two, in pieces that the caller orders: rows in groups of 16, columns in blocks of 16.
///
/// The forward transform F(v, u) = sum of image(y, x) exp(-2 pi i (u x / w + v y / h)) carries no
/// factor; the inverse divides by w h. A whole forward transform is `forwardRows` for every group,
/// then `forwardColumns` for every block; the inverse is `inverseColumns` for every block, then
/// `inverseRows` for every group. The first step must be complete before the second begins; within
/// a step the pieces are independent and may run on any threads in any order. Therefore work on
/// single frequencies can be done block by block between `forwardColumns` and `inverseColumns`,
/// while the block is in the cache.
///
/// Storage of the half spectrum. Block b holds the complex columns u = 16b..16b+15 of the w/2
/// columns and starts at `spectrum + b * blockFloats()`. The rows of a block are contiguous; a row
/// is 32 floats: 16 real parts, then the 16 imaginary parts of the same columns. Before
/// `forwardColumns` and after `inverseColumns` row y belongs to image row y. In between, when the
/// columns are frequencies too, the rows are in the order of the transform: row `rowOf(v)` holds
/// F(v, u), row p holds F(`frequencyOf(p)`, u), and row 0 holds frequency 0. Work that treats all
/// frequencies alike can ignore the order.
///
/// Column 0 (first lane of block 0) is an exception: it holds the two columns with symmetric
/// spectra, F(v, 0) and F(v, w/2). After `forwardColumns` it holds
///   row 0:                       re = F(0, 0),   im = F(0, w/2)    (both are real),
///   rowOf(h/2):                  re = F(h/2, 0), im = F(h/2, w/2)  (both are real),
///   rowOf(v), 0 < v < h/2:       F(v, 0),
///   rowOf(h - v), 0 < v < h/2:   F(v, w/2).
/// The other values follow from F(-v, -u) = conj F(v, u). For images narrower than 32 the lanes
/// from w/2 on are undefined; for w = 1 there is no column w/2 and its slots are undefined too.
///
/// The caller provides the storage: `spectrumFloats()` for the spectrum and `scratchFloats()` for
/// each thread that transforms rows, both aligned to 64 bytes. Images may have any alignment and
/// any step. The object holds constant tables only and may be shared by any number of threads.
///
/// Every processor variant does the same arithmetic for an element and gives the same bits.
class RealFft2D {
public:
    /// Columns of a block, and rows of a group.
    static constexpr int kLanes = 16;
    /// Floats of one row of a block: kLanes real parts, kLanes imaginary parts.
    static constexpr int kRowFloats = 2 * kLanes;

    /// For images 2^orderX wide and 2^orderY high; both orders from 0 to 30.
    /// @throws std::bad_alloc when memory is exhausted or the spectrum exceeds the address space,
    /// std::length_error when a table exceeds the largest size of a vector
    RealFft2D(int orderX, int orderY);

    int width() const noexcept { return m_width; }
    int height() const noexcept { return m_height; }
    /// Number of column blocks, at least 1.
    int blockCount() const noexcept { return m_blockCount; }
    /// Number of row groups, at least 1. An image of less than 16 rows is one group.
    int groupCount() const noexcept { return m_groupCount; }
    /// Distance of two blocks in the spectrum. The first 32 h floats are the block.
    std::size_t blockFloats() const noexcept { return m_blockFloats; }
    std::size_t spectrumFloats() const noexcept { return m_spectrumFloats; }
    std::size_t scratchFloats() const noexcept { return m_scratchFloats; }

    /// The row of frequency `v` in the blocks.
    std::size_t rowOf(int v) const noexcept {
        return m_tables.columns.places[static_cast<std::size_t>(v)];
    }
    /// The frequency of row `row` in the blocks.
    int frequencyOf(int row) const noexcept {
        return static_cast<int>(m_tables.columnFrequencies[static_cast<std::size_t>(row)]);
    }

    /// Transforms the rows 16 `group`..16 `group` + 15 of the image at `image` into the rows of the
    /// same numbers in all blocks. `imageStepBytes` may be negative.
    void forwardRows(const float* image, std::ptrdiff_t imageStepBytes, int group, float* spectrum,
                     float* scratch) const;

    /// The same for rows outside an image: `firstRow` is the first row of the group.
    void forwardRowGroup(const float* firstRow, std::ptrdiff_t stepBytes, int group,
                         float* spectrum, float* scratch) const;

    /// Transforms the columns of one block in place. `block` is the block's first float.
    void forwardColumns(float* block, int blockIndex) const;

    /// The inverse of `forwardColumns`, times h.
    void inverseColumns(float* block, int blockIndex) const;

    /// The inverse of `forwardRows`, divided by h: writes the rows 16 `group`..16 `group` + 15 of
    /// the image.
    void inverseRows(const float* spectrum, int group, float* image, std::ptrdiff_t imageStepBytes,
                     float* scratch) const;

    /// Constant data of the kernels.
    struct Tables {
        Tables(int orderX, int orderY);

        LaneFftPlan rows;    ///< of half the width
        LaneFftPlan columns; ///< of the height
        /// -i exp(-2 pi i k / w) / 2 for k = 0..w/4, as pairs (re, im): the factors that join the
        /// transforms of the even and the odd samples of a row.
        std::vector<float> joinFactors;
        /// The inverse of `columns.places`.
        std::vector<std::uint32_t> columnFrequencies;
        float inverseFactor; ///< scale of the inverse, with row transforms of half the length
    };

private:
    int m_width;
    int m_height;
    int m_blockCount;
    int m_groupCount;
    std::size_t m_blockFloats;
    std::size_t m_spectrumFloats;
    std::size_t m_scratchFloats;
    Tables m_tables;
};

} // namespace vel
