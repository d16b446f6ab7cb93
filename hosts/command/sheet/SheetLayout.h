#pragma once

#include <algorithm>

namespace velorn {

/// Where the cells of a sheet lie, in pixels: three in a row, each a detail with a strip of text
/// below it, all of the same size.
class SheetLayout {
public:
    /// The largest sides of a detail, as displayed.
    static constexpr int kDetailWidth = 400;
    static constexpr int kDetailHeight = 300;
    static constexpr int kColumns = 3;
    static constexpr int kMargin = 24;
    /// Between a detail and its strip.
    static constexpr int kGap = 14;
    static constexpr int kKernelSide = 105;
    /// Heights of capital letters.
    static constexpr int kHeading = 14;
    static constexpr int kText = 10;

    /// @param detailWidth, detailHeight of the largest detail
    SheetLayout(int detailWidth, int detailHeight, int count)
        : m_width(std::max(detailWidth, kDetailWidth)), m_detailHeight(detailHeight),
          m_height(detailHeight + kGap + kKernelSide + kMargin),
          m_columns(std::min(count, kColumns)), m_rows((count + kColumns - 1) / kColumns) {}

    /// Of a cell.
    int width() const { return m_width; }
    int left(int cell) const { return kMargin + cell % kColumns * (m_width + kMargin); }
    int top(int cell) const { return kMargin + cell / kColumns * m_height; }
    /// The top of the strip.
    int strip(int cell) const { return top(cell) + m_detailHeight + kGap; }
    /// The top of what is written below the heading of the strip.
    int text(int cell) const { return strip(cell) + 2 * kHeading + kText / 2; }
    int sheetWidth() const { return kMargin + m_columns * (m_width + kMargin); }
    /// With a line of text at the bottom.
    int sheetHeight() const { return kMargin + m_rows * m_height + 2 * kText + kMargin / 2; }

private:
    int m_width;
    int m_detailHeight;
    int m_height;
    int m_columns;
    int m_rows;
};

} // namespace velorn
