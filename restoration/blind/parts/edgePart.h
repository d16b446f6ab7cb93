#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/threads/Team.h"

namespace restoration {

/// The part of `width` by `height` pixels of `luminance` with the most edges, among several places.
///
/// Edges are the gradients that L0-regularised smoothing of a reduced copy keeps, therefore fine
/// texture counts little. Both sides are at most those of the picture; parts equal in edges: the
/// topmost, then leftmost one.
/// @throws std::bad_alloc; Failure VELORN_STATUS_CANCELLED
Rect edgePart(const Plane& luminance, int width, int height, Team& team);

} // namespace restoration
