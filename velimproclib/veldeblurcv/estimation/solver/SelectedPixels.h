#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace vel {

struct PixelPosition {
    int row;
    int column;

    bool operator==(const PixelPosition&) const = default;
};

/// Rows or columns from `begin` up to but not including `end`; none when `end` is not above it.
struct PixelRange {
    std::int64_t begin;
    std::int64_t end;
};

/// Enumerates the pixels that a mask selects, row by row, in batches. One thread uses an object;
/// the mask must outlive it.
class SelectedPixels {
public:
    /// @param mask    CV_8UC1; pixels that are not 0 are selected
    /// @param walked  rows that are visited and reported, inside the mask or not
    /// @param rows    rows among them in which pixels count, inside the mask
    /// @param columns columns in which pixels count, inside the mask
    /// @param batchPixels largest number of pixels in a batch, at least 1
    SelectedPixels(const cv::Mat& mask, PixelRange walked, PixelRange rows, PixelRange columns,
                   int batchPixels) noexcept
        : m_mask(mask), m_walkedEnd(walked.end), m_rows(rows), m_columns(columns),
          m_capacity(static_cast<std::size_t>(batchPixels)), m_row(walked.begin - 1),
          m_column(columns.end) {}

    std::size_t capacity() const noexcept { return m_capacity; }

    /// Replaces `batch` by the next pixels, at most `capacity`. It is empty after the last pixel.
    /// Calls `rowTaken()` for each visited row, before the search for its pixels.
    template <class RowTaken>
    void next(std::vector<PixelPosition>& batch, RowTaken&& rowTaken) {
        batch.clear();
        while (batch.size() < m_capacity && reachPixel(rowTaken)) {
            batch.push_back({static_cast<int>(m_row), static_cast<int>(m_column)});
            ++m_column;
        }
    }

private:
    template <class RowTaken>
    bool reachPixel(RowTaken& rowTaken) {
        while (!reachPixelInRow()) {
            if (m_row + 1 >= m_walkedEnd) {
                return false;
            }
            ++m_row;
            m_column = m_columns.begin;
            rowTaken();
        }
        return true;
    }

    bool reachPixelInRow() noexcept;

    const cv::Mat& m_mask;
    std::int64_t m_walkedEnd;
    PixelRange m_rows;
    PixelRange m_columns;
    std::size_t m_capacity;
    std::int64_t m_row;
    std::int64_t m_column;
};

} // namespace vel
