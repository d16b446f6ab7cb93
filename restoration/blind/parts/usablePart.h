#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"

#include <algorithm>
#include <cmath>

namespace restoration {

/// The values that a picture may have; white is 1.
struct ValueRange {
    float least;
    float most;

    /// The nearest value within the range; 0 for values that are not finite.
    float usable(float value) const noexcept {
        return std::isfinite(value) ? std::clamp(value, least, most) : 0.0f;
    }
};

/// Of displays: what is darker or lighter looks the same.
inline constexpr ValueRange kDisplayRange{0.0f, 1.0f};
/// Keeps light above white and noise below black, and values that transforms can take.
inline constexpr ValueRange kTransformRange{-1.0f, 2.0f};

/// The part of `plane` in `part`, with values within `range`.
/// @throws std::bad_alloc
Plane usablePart(const Plane& plane, const Rect& part, const ValueRange& range = kTransformRange);

} // namespace restoration
