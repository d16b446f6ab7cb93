#pragma once

#include <string>

namespace velorn {

/// A rectangle of a picture, in pixels.
struct PictureArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PictureArea&) const = default;
    /// Whether no part of it lies outside of a picture of these sides.
    bool isInside(int pictureWidth, int pictureHeight) const {
        return x >= 0 && y >= 0 && width > 0 && height > 0 && width <= pictureWidth - x &&
               height <= pictureHeight - y;
    }
    /// "X,Y,WIDTH,HEIGHT", as on the command line.
    std::string text() const {
        return std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(width) + "," +
               std::to_string(height);
    }
};

/// `area`, which refers to a picture as displayed, for the rows and columns as a file with the
/// given EXIF orientation (1..8) stores them. `width` and `height` are the stored sides.
PictureArea asStored(const PictureArea& area, int orientation, int width, int height);

/// The inverse of `asStored`; `width` and `height` are the displayed sides.
PictureArea asShown(const PictureArea& area, int orientation, int width, int height);

} // namespace velorn
