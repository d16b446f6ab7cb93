#include "restoration/blind/analytic/KernelKind.h"

#include <cmath>

namespace restoration {

float undirectedAngle(float degrees) noexcept {
    const float angle = std::remainder(degrees, 180.0f);
    return angle <= -90.0f ? angle + 180.0f : angle;
}

} // namespace restoration
