#pragma once

#include <algorithm>

namespace restoration {

/// A rectangle of pixels.
struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int right() const noexcept { return x + width; }   ///< the column after the last
    int bottom() const noexcept { return y + height; } ///< the row after the last
    bool isEmpty() const noexcept { return width < 1 || height < 1; }
    bool operator==(const Rect&) const = default;
};

/// The common part of two rectangles; empty where there is none.
inline Rect intersection(const Rect& a, const Rect& b) noexcept {
    const int x = std::max(a.x, b.x);
    const int y = std::max(a.y, b.y);
    return {x, y, std::min(a.right(), b.right()) - x, std::min(a.bottom(), b.bottom()) - y};
}

} // namespace restoration
