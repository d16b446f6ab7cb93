#pragma once

#include "restoration/planes/Plane.h"

namespace restoration {

/// Fills the ring of a tile: continues the first `width` columns and `height` rows of `plane`
/// smoothly from each edge to the opposite one, across the end of the plane. The rest of the plane
/// stays.
void joinEdges(Plane& plane, int width, int height) noexcept;

} // namespace restoration
