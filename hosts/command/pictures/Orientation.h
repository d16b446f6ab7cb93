#pragma once

namespace velorn {

/// The orientation of a stored picture: how its rows and columns are arranged for display.
class Orientation {
public:
    struct Position {
        int row;
        int column;
    };

    /// `code` is 1..8 as in EXIF; 1 means that the picture is displayed as stored.
    explicit Orientation(int code)
        : m_swapsSides(code >= 5), m_fromBottom(code == 3 || code == 4 || code == 7 || code == 8),
          m_fromRight(code == 2 || code == 3 || code == 6 || code == 7) {}

    /// Whether stored rows are displayed as columns, so that width and height change places.
    bool swapsSides() const { return m_swapsSides; }

    /// Where the pixel at `stored` is displayed. `width` and `height` are the displayed sides.
    Position displayed(Position stored, int width, int height) const {
        const int row = m_swapsSides ? stored.column : stored.row;
        const int column = m_swapsSides ? stored.row : stored.column;
        return {m_fromBottom ? height - 1 - row : row, m_fromRight ? width - 1 - column : column};
    }

    /// The code of the orientation that undoes `code`. Quarter turns (6 and 8) are inverse to each
    /// other; all others are inverse to themselves.
    static int inverse(int code) { return code == 6 ? 8 : code == 8 ? 6 : code; }

private:
    bool m_swapsSides;
    bool m_fromBottom;
    bool m_fromRight;
};

} // namespace velorn
