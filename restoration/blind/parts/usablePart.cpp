#include "restoration/blind/parts/usablePart.h"

#include <algorithm>

namespace restoration {

Plane usablePart(const Plane& plane, const Rect& part, const ValueRange& range) {
    Plane copy(part.width, part.height);
    for (int y = 0; y < part.height; ++y) {
        const float* source = plane.row(part.y + y) + part.x;
        std::transform(source, source + part.width, copy.row(y),
                       [range](float value) { return range.usable(value); });
    }
    return copy;
}

} // namespace restoration
