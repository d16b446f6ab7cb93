#include "restoration/blind/parts/usablePart.h"

#include <algorithm>
#include <cmath>

namespace restoration {

Plane usablePart(const Plane& plane, const Rect& part) {
    constexpr float kBlackest = -1.0f;
    constexpr float kWhitest = 2.0f;
    Plane copy(part.width, part.height);
    for (int y = 0; y < part.height; ++y) {
        const float* source = plane.row(part.y + y) + part.x;
        std::transform(source, source + part.width, copy.row(y), [=](float value) {
            return std::isfinite(value) ? std::clamp(value, kBlackest, kWhitest) : 0.0f;
        });
    }
    return copy;
}

} // namespace restoration
