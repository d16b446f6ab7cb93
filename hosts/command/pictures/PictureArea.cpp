#include "hosts/command/pictures/PictureArea.h"

#include "hosts/command/pictures/Orientation.h"

#include <algorithm>
#include <cstdlib>

namespace velorn {

PictureArea asShown(const PictureArea& area, int orientation, int width, int height) {
    const Orientation arrangement(orientation);
    const auto first = arrangement.displayed({area.y, area.x}, width, height);
    const auto last =
        arrangement.displayed({area.y + area.height - 1, area.x + area.width - 1}, width, height);
    return {std::min(first.column, last.column), std::min(first.row, last.row),
            std::abs(first.column - last.column) + 1, std::abs(first.row - last.row) + 1};
}

PictureArea asStored(const PictureArea& area, int orientation, int width, int height) {
    return asShown(area, Orientation::inverse(orientation), width, height);
}

} // namespace velorn
