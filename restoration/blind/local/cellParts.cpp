#include "restoration/blind/local/cellParts.h"

#include "restoration/blind/parts/edgeParts.h"
#include "restoration/blind/parts/usablePart.h"
#include "restoration/planes/Rect.h"

#include <algorithm>

namespace restoration {
namespace {

/// The length of a part along an axis, for a cell of `cell` pixels in a picture of `all`.
int lengthFor(int cell, int all, int longest) {
    constexpr int kLeast = 256;
    return std::min({std::max(cell * 4 / 3, kLeast), all, longest});
}

/// Where a part of `length` begins so that it has the middle of the cell in its middle, if the
/// picture allows.
int beginAround(int cellBegin, int cell, int length, int all) {
    return std::clamp(cellBegin + (cell - length) / 2, 0, all - length);
}

Rect partOf(const Rect& cell, const Plane& luminance, int longest, Team& team) {
    const int width = lengthFor(cell.width, luminance.width(), longest);
    const int height = lengthFor(cell.height, luminance.height(), longest);
    if (width >= cell.width && height >= cell.height) {
        return {beginAround(cell.x, cell.width, width, luminance.width()),
                beginAround(cell.y, cell.height, height, luminance.height()), width, height};
    }
    const Rect inside = edgeParts(usablePart(luminance, cell), std::min(width, cell.width),
                                  std::min(height, cell.height), 1, team)
                            .front();
    return {cell.x + inside.x, cell.y + inside.y, inside.width, inside.height};
}

} // namespace

std::vector<Plane> cellParts(const Plane& luminance, const Cells& cells, int longest, Team& team) {
    const int width = luminance.width() / cells.columns;
    const int height = luminance.height() / cells.rows;
    std::vector<Plane> parts;
    for (std::size_t i = 0; i < cells.count(); ++i) {
        const Rect cell{cells.columnOf(i) * width, cells.rowOf(i) * height, width, height};
        parts.push_back(usablePart(luminance, partOf(cell, luminance, longest, team)));
    }
    return parts;
}

} // namespace restoration
