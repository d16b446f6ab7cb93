#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"

namespace restoration {

/// The part of `plane` in `part`, with values that transforms can take: those that are not finite
/// become 0, others lie between -1 and 2.
/// @throws std::bad_alloc
Plane usablePart(const Plane& plane, const Rect& part);

} // namespace restoration
