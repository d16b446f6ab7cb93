#pragma once

#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// A rectangle of pixels. It may extend beyond the picture that it refers to.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool contains(int column, int row) const {
        return column >= x && column < x + width && row >= y && row < y + height;
    }
    double area() const { return static_cast<double>(width) * height; }
};

/// The pixels of `rect`. Where `rect` extends beyond `source`, the nearest border pixel is
/// repeated.
RgbPixels crop(const RgbPixels& source, const PixelRect& rect);

} // namespace velorn
