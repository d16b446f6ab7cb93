#pragma once

namespace velorn {

/// How the rows and columns of a stored picture stand when it is shown.
class Orientation {
public:
    struct Position {
        int row;
        int column;
    };

    /// `code` is 1..8 as EXIF counts; 1 is as stored.
    explicit Orientation(int code)
        : m_isTurned(code >= 5), m_fromBottom(code == 3 || code == 4 || code == 7 || code == 8),
          m_fromRight(code == 2 || code == 3 || code == 6 || code == 7) {}

    /// Whether stored rows are shown as columns.
    bool isTurned() const { return m_isTurned; }

    /// Where the stored pixel is shown, in a picture that is shown `width` by `height`.
    Position shown(Position stored, int width, int height) const {
        const int row = m_isTurned ? stored.column : stored.row;
        const int column = m_isTurned ? stored.row : stored.column;
        return {m_fromBottom ? height - 1 - row : row, m_fromRight ? width - 1 - column : column};
    }

private:
    bool m_isTurned;
    bool m_fromBottom;
    bool m_fromRight;
};

} // namespace velorn
