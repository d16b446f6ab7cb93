#pragma once

#include "hosts/command/kernels/KernelSize.h"

#include <algorithm>

namespace velorn {

/// Where the tiles of a trial lie on the sheet, in pixels: in rows that fit a screen, each with a
/// label below it.
class TrialLayout {
public:
    static constexpr int kMargin = 24;
    /// Between a tile and its label.
    static constexpr int kGap = 12;
    /// Heights of capital letters.
    static constexpr int kWords = 12;
    static constexpr int kRemark = 10;

    /// The sides of a tile, as displayed, that the command chooses for so many tiles: two rows of
    /// three or three rows of four fill a screen.
    static KernelSize usualSides(int count) {
        return count <= 6 ? KernelSize{600, 400} : KernelSize{448, 300};
    }

    /// @param labelHeight of the highest label
    TrialLayout(int tileWidth, int tileHeight, int labelHeight, int count)
        : m_cellWidth(cellWidth(tileWidth)), m_tileHeight(tileHeight),
          m_cellHeight(tileHeight + kGap + labelHeight),
          m_rows(rowsOf(count, (kScreen - kMargin) / (m_cellWidth + kMargin))),
          m_columns((count + m_rows - 1) / m_rows) {}

    /// Of a tile with its label, which needs room for words.
    static int cellWidth(int tileWidth) { return std::max(tileWidth, kLeastWidth); }

    int left(int cell) const { return kMargin + cell % m_columns * (m_cellWidth + kMargin); }
    int top(int cell) const { return kMargin + cell / m_columns * (m_cellHeight + kMargin); }
    int label(int cell) const { return top(cell) + m_tileHeight + kGap; }
    int sheetWidth() const { return kMargin + m_columns * (m_cellWidth + kMargin); }
    /// The top of the text below the tiles.
    int footer() const { return kMargin + m_rows * (m_cellHeight + kMargin); }

private:
    /// With at most so many columns, unless a single one is too wide.
    static int rowsOf(int count, int columns) {
        const int most = std::max(columns, 1);
        return (count + most - 1) / most;
    }

    static constexpr int kScreen = 1920;
    static constexpr int kLeastWidth = 300;

    int m_cellWidth;
    int m_tileHeight;
    int m_cellHeight;
    int m_rows;
    int m_columns; ///< as few as so many rows need
};

} // namespace velorn
