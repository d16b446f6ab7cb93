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
/// `inverseRows` for every group. Between the two steps everything must be done; within a step
/// the pieces are independent and may run on any threads in any order. Work on one frequency at a
/// time can so be done on one block between `forwardColumns` and `inverseColumns`, while
/// it is in the cache.
///
/// Storage of the half spectrum. Block b holds the complex columns u = 16b..16b+15 of the w/2
/// columns and starts at `spectrum + b * blockFloats()`. Inside a block row follows row; a row is
/// 32 floats: 16 real parts, then the 16 imaginary parts of the same columns. Before
/// `forwardColumns` and after `inverseColumns` row y belongs to image row y. In between, where the
/// columns are frequencies too, the rows stand in the order that the transform leaves them in: row
/// `rowOf(v)` holds F(v, u), row p holds F(`frequencyOf(p)`, u), and row 0 holds frequency 0. Work
/// that treats all frequencies alike need not know.
///
/// Column 0 (first lane of block 0) is an exception: it carries the two columns whose spectra have
/// a symmetry of their own, F(v, 0) and F(v, w/2). After `forwardColumns` it holds
///   row 0:                       re = F(0, 0),   im = F(0, w/2)    (both are real),
///   rowOf(h/2):                  re = F(h/2, 0), im = F(h/2, w/2)  (both are real),
///   rowOf(v), 0 < v < h/2:       F(v, 0),
///   rowOf(h - v), 0 < v < h/2:   F(v, w/2).
/// The other values follow from F(-v, -u) = conj F(v, u). Images narrower than 32 leave the lanes
/// from w/2 on without a meaning; with w = 1 there is no column w/2 and its slots have no meaning
/// either.
///
/// Storage is the caller's: `spectrumFloats()` for the spectrum, `scratchFloats()` for each
/// thread that transforms rows, both aligned to 64 bytes. Images may have any alignment and any
/// step. The object holds constant tables only and may be shared by any number of threads.
///
/// The arithmetic of an element is the same on every processor variant: so are the bits.
class RealFft2D {
public:
    /// Columns of a block, and rows of a group.
    static constexpr int kLanes = 16;
    /// Floats of one row of a block: kLanes real parts, kLanes imaginary parts.
    static constexpr int kRowFloats = 2 * kLanes;

    /// For images 2^orderX wide and 2^orderY high; both orders from 0 to 30.
    /// @throws std::bad_alloc when the tables do not fit in memory or the spectrum could not be
    /// addressed, std::length_error when a table is longer than a vector can be: both are
    /// std::exception.
    RealFft2D(int orderX, int orderY);

    int width() const noexcept { return m_width; }
    int height() const noexcept { return m_height; }
    /// Number of column blocks, at least 1.
    int blockCount() const noexcept { return m_blockCount; }
    /// Number of row groups, at least 1; the group of an image lower than 16 has `height()` rows.
    int groupCount() const noexcept { return m_groupCount; }
    /// Distance of two blocks in the spectrum. The first 32 h floats are the block.
    std::size_t blockFloats() const noexcept { return m_blockFloats; }
    std::size_t spectrumFloats() const noexcept { return m_spectrumFloats; }
    std::size_t scratchFloats() const noexcept { return m_scratchFloats; }

    /// The row of frequency `v` in the blocks, and the frequency of row `row`.
    std::size_t rowOf(int v) const noexcept {
        return m_tables.columns.places[static_cast<std::size_t>(v)];
    }
    int frequencyOf(int row) const noexcept {
        return static_cast<int>(m_tables.columnFrequencies[static_cast<std::size_t>(row)]);
    }

    /// Transforms the rows 16 `group`..16 `group` + 15 of the image at `image` into the rows of the
    /// same numbers in all blocks. `imageStepBytes` may be negative.
    void forwardRows(const float* image, std::ptrdiff_t imageStepBytes, int group, float* spectrum,
                     float* scratch) const;

    /// The same for rows that stand elsewhere: `firstRow` is the first row of the group.
    void forwardRowGroup(const float* firstRow, std::ptrdiff_t stepBytes, int group,
                         float* spectrum, float* scratch) const;

    /// Transforms the columns of one block in place. `block` is the block's first float.
    void forwardColumns(float* block, int blockIndex) const;

    /// Undoes `forwardColumns`, times h.
    void inverseColumns(float* block, int blockIndex) const;

    /// Undoes `forwardRows`, divided by h: writes the rows 16 `group`..16 `group` + 15 of the
    /// image.
    void inverseRows(const float* spectrum, int group, float* image, std::ptrdiff_t imageStepBytes,
                     float* scratch) const;

    /// The same for rows that stand elsewhere: `firstRow` is the first row of the group.
    void inverseRowGroup(const float* spectrum, int group, float* firstRow,
                         std::ptrdiff_t stepBytes, float* scratch) const;

    /// Constant data of the kernels.
    struct Tables {
        Tables(int orderX, int orderY);

        LaneFftPlan rows;    ///< of half the width
        LaneFftPlan columns; ///< of the height
        /// -i exp(-2 pi i k / w) / 2 for k = 0..w/4, pairs (re, im): they join the transforms of
        /// the even and the odd samples of a row.
        std::vector<float> joinFactors;
        /// The inverse of `columns.places`.
        std::vector<std::uint32_t> columnFrequencies;
        float inverseFactor; ///< of the inverse transform, for a row transform of half length
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
